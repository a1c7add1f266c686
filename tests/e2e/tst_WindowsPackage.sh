#!/usr/bin/env bash
# tst_WindowsPackage.sh BUILD NATIVE
# Packs a build for Windows, unpacks it and works under Wine with what came out, with a camera of the
# build NATIVE. Started again as tst_WindowsPackage.sh --unpacked FOLDER NATIVE it has a screen, a
# network and Wine, which is told of no libraries but its own.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
. "$root/scripts/lib/packages.sh"
. "$root/scripts/lib/network.sh"
. "$root/scripts/lib/windows-kit.sh"
. "$root/scripts/lib/windows-pack.sh"
. "$here/package-test.sh"

if [ "$1" = --unpacked ]; then
    cd "$2"
    camera=$VORLYN_TEST_CAMERA_PID
    start_cameras "$3/bin/vorlyn-fleet" ../fleet --count 1 --first-address 10.77.0.11 </dev/null
    trap 'kill "$fleet"' EXIT
    export WINEPATH=
    seen="await picture"
    use VorlynIPTool wine VorlynIPTool.exe
    use VorlynBench wine VorlynBench.exe
    exit
fi

build=$1 native=$2
version=$(built_version "$build")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

pack() { pack_windows "$build" "$1" | tail -n 1; } # OUT
archive=$(pack "$work/first")
expect "the archive has its version in its name" \
    test "${archive##*/}" = "VorlynIPTool-$version-win64.zip"
expect "packing again gives the same archive" cmp "$archive" "$(pack "$work/second")"

unzip -q "$archive" -d "$work"
programs=$work/VorlynIPTool-$version
files() { (cd "$programs" && find . -type f ! -path './licenses/*' -printf '%P\n' | LC_ALL=C sort); }
before=$(files)
expect "what was packed is there" same "$(cat <<END
Qt5Core.dll
Qt5Gui.dll
Qt5Multimedia.dll
Qt5Network.dll
Qt5PrintSupport.dll
Qt5Widgets.dll
README.txt
VorlynBench.exe
VorlynIPTool.exe
audio/qtaudio_windows.dll
avcodec-59.dll
avformat-59.dll
avutil-57.dll
imageformats/qgif.dll
imageformats/qico.dll
imageformats/qjpeg.dll
label-printer-simulation/README.txt
label-printer-simulation/WINPSK.dll
language/cn.txt
language/en.txt
libgcc_s_seh-1.dll
libqrencode.dll
libstdc++-6.dll
libwinpthread-1.dll
platforms/qwindows.dll
printsupport/windowsprintersupport.dll
qt.conf
styles/qwindowsvistastyle.dll
swresample-4.dll
translations/qtbase_zh_CN.qm
END
)" "$before"
expect "all of it is of the sources' time" same "$(even_time)" \
    "$(find "$programs" -type f -printf '%T@\n' | cut -d . -f 1 | sort -u)"
texts=$(find "$programs" -name '*.txt' ! -path '*/language/*' -o -name qt.conf)
# shellcheck disable=SC2086 # file names without blanks
expect "each line of its texts ends as on Windows" test -z "$(grep -L $'\r$' $texts; grep -h -v $'\r$' $texts)"
expect "the text has the version" grep -qw "$version" "$programs/README.txt"
expect "no gap is left in the texts" test -z "$(grep -rl '@[A-Z_]*@' --include=README.txt "$programs")"
tr -d '\r' <"$programs/licenses/INDEX.txt" >"$work/index"
for library in $(grep -E '\.(dll|qm)$' <<<"$before" | grep -v WINPSK); do
    expect "the licences name $library" grep -qxF "$library" "$work/index"
done

# No picture of DXVA2 comes under Wine.
mkdir "$programs/configure"
printf '[General]\r\nhardware=0\r\n' >"$programs/configure/configure.ini"
expect "the programs start, show the camera and end" \
    "$root/tests/support/run-test.sh" --display --network --wine \
    -- "$here/tst_WindowsPackage.sh" --unpacked "$programs" "$native"
added=$(comm -13 <(echo "$before") <(files) | sed -E 's/[0-9]{14}/TIME/')
expect "they leave settings and log beside themselves and nothing else" \
    same "configure/configure.ini
log/TIME.clog
log/TIME.clog" "$added"
expect "the settings were theirs" grep -q '^langage=' "$programs/configure/configure.ini"
