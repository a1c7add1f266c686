#!/usr/bin/env bash
# tst_Package.sh BUILD
# Packs a build, unpacks it as an ordinary user and works there with what came out. Started again as
# tst_Package.sh --unpacked HOME it is that user, who has a screen and a network of his own.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
. "$root/scripts/lib/packages.sh"
. "$root/scripts/lib/network.sh"
. "$root/scripts/lib/linux-pack.sh"
. "$here/package-test.sh"

if [ "$1" = --unpacked ]; then
    export HOME=$2
    use VorlynIPTool ./VorlynIPTool
    use VorlynBench ./VorlynBench
    exit
fi

as_user() { "$@"; }
if [ "$(id -u)" -eq 0 ]; then
    as_user() { setpriv --reuid nobody --regid nogroup --clear-groups "$@"; }
    as_user test -r "$here" -a -x "$1" ||
        { echo "the user nobody can't reach $here and $1" >&2; exit 1; }
fi

build=$1
version=$(built_version "$build")
folder=VorlynIPTool-$version
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"

archive=$(pack_linux "$build" "$work/first")
expect "the archive has its version in its name" \
    test "${archive##*/}" = "VorlynIPTool-$version-linux-x86_64.tar.gz"
expect "packing again gives the same archive" cmp "$archive" "$(pack_linux "$build" "$work/second")"
expect "all its files are root's and of the sources' time" \
    same "0/0 $(date -ud "@$(source_time)" '+%F %T')" \
    "$(tar -tvzf "$archive" --numeric-owner --utc --full-time | awk '{ print $2, $4, $5 }' | sort -u)"

user=$work/user programs=$work/user/programs/$folder
mkdir -m 777 "$user" "$work/screen" # the screen's programs have a home too, and use it
as_user mkdir "$user"/{home,tmp,programs}
as_user tar -C "$user/programs" -xzf "$archive"
files() { (cd "$user" && find . ! -type d | sort); }
before=$(files)
expect "what was packed is there" same "$(sed "s|^|./programs/$folder/|" <<END
README.txt
VorlynBench
VorlynIPTool
label-printer-simulation/README.txt
label-printer-simulation/libWINPSK.so
language/cn.txt
language/en.txt
vorlyn-fleet
END
)" "$before"

elf=("$programs"/{VorlynIPTool,VorlynBench,vorlyn-fleet,label-printer-simulation/libWINPSK.so})
expect "no file is looked for where they were built" \
    test -z "$(readelf -d "${elf[@]}" | grep -E 'R(UN)?PATH')"
expect "they are stripped" test -z "$(readelf -S "${elf[@]}" | grep -F .symtab)"
expect "the cameras have the version" same "$version" \
    "$(as_user "$programs/vorlyn-fleet" --version | grep -o '[0-9.]*$')"
expect "the text has the version" grep -qw "$version" "$programs/README.txt"
expect "no gap is left in the texts" \
    test -z "$(grep -r '@[A-Z_]*@' --include=README.txt "$programs")"
named=$(sed -n '/^    apt-get/,/[^\\]$/{s/apt-get install\|\\$//g;p}' "$programs/README.txt" | xargs -n 1)
expect "the text names the packages of what is linked" grep -x libqt5widgets5 <<<"$named"
expect "and of what is loaded" grep -x libqt5multimedia5-plugins <<<"$named"
# shellcheck disable=SC2086 # a list of names
expect "the distribution has them all" dpkg-query -W $named

expect "the programs start and end" \
    as_user env -i -C "$programs" PATH="$PATH" HOME="$work/screen" TMPDIR="$user/tmp" \
    ASAN_OPTIONS="${ASAN_OPTIONS:-}" LSAN_OPTIONS="${LSAN_OPTIONS:-}" \
    "$root/tests/support/run-test.sh" --display --network -- "$here/tst_Package.sh" --unpacked "$user/home"
added=$(comm -13 <(echo "$before") <(files) | sed -E 's/[0-9]{14}/TIME/')
expect "they leave settings and log beside themselves and nothing else" \
    same "./programs/$folder/configure/configure.ini
./programs/$folder/log/TIME.clog
./programs/$folder/log/TIME.clog" "$added"
expect "and neither in the home" test -z "$(ls -A "$user/home")"
