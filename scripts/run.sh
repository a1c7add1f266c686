#!/usr/bin/env bash
# run.sh            installs what is missing, builds, and opens the program in a private network
#                   with eight simulated cameras, of which the first one plays, and a simulated
#                   label printer. It runs in build/demo, where settings and labels stay. On a
#                   machine with no display it uses a virtual one and writes screenshots in both
#                   languages to build/screenshots.
# run.sh --bench    does the same with VorlynBench, the workplace of production and service.
# run.sh --real     opens the program on this machine's own network and with its printers instead;
#                   with --bench, in any order, VorlynBench.
# Works as root and as an ordinary user who may make user namespaces.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$root/build/release/bin
label_printer=$root/build/release/fleet/libWINPSK.so
demo=$root/build/demo
screenshots=$root/build/screenshots
. "$root/scripts/lib/packages.sh"
. "$root/scripts/lib/network.sh"
. "$root/scripts/lib/display.sh"

name=VorlynIPTool view=main-window real=
for option in "$@"; do
    case $option in
        --bench) name=VorlynBench view=bench-window ;;
        --real) real=yes ;;
        *) sed -n '2,10s/^# //p' "$0"; [ "$option" = --help ] && exit 0; exit 2 ;;
    esac
done

if [ -z "${VORLYN_IN_NETWORK:-}" ]; then
    # shellcheck disable=SC2086 # lists of names
    needed="$build_packages $run_packages"
    [ -n "${DISPLAY:-}" ] || needed+=" $screen_packages"
    install_packages $needed
    cd "$root"
    cmake --preset release >/dev/null
    cmake --build --preset release --target "$name" vorlyn-fleet WINPSK LanguageFiles
fi
if [ -n "$real" ]; then
    exec "$bin/$name"
fi
enter_network "$0" "$@"

work=$(mktemp -d)
camera= fleet= program= display_pids=
finish() {
    # The fleet first: it still puts its addresses away.
    for pid in $program $fleet $camera $display_pids; do
        kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap finish EXIT
trap 'exit 143' TERM INT

# place_program FOLDER: a copy of the program that prints to the simulated label printer.
place_program() {
    local settings=$1/configure/configure.ini
    mkdir -p "$1/configure"
    cp -r --remove-destination "$bin/$name" "$bin/language" "$label_printer" "$1"
    [ -s "$settings" ] || echo '[General]' >"$settings"
    grep -q '^printer%20name=.*POSTEK' "$settings" || sed -i -e '/^printer%20name=/d' \
        -e '/^\[General\]/a printer%20name=POSTEK G6000' "$settings"
}

shot() { import -window root "$screenshots/$1.png"; }

# take_screenshots LANGUAGE: runs a copy of the program with settings of its own.
take_screenshots() {
    local folder=$work/$1
    mkdir -p "$folder/configure"
    printf '[General]\nlangage=%s\nsearch%%20seconds=2\n' "$1" >"$folder/configure/configure.ini"
    place_program "$folder"
    "$folder/$name" >/dev/null 2>&1 &
    program=$!
    await windows 2
    shot "searching-$1"
    await windows 1
    await picture
    shot "$view-$1"
    kill "$program"
    wait "$program" || true
    program=
}

make_network
start_cameras "$bin/vorlyn-fleet" "$work/fleet" --count 8 --first-address 10.77.0.11 \
    --journal "$work/journal" </dev/null
if [ -n "${DISPLAY:-}" ]; then
    place_program "$demo"
    echo "The label printer's labels: $demo/labels"
    "$demo/$name"
else
    make_display "$work"
    mkdir -p "$screenshots"
    take_screenshots en
    take_screenshots cn
    echo "No display here. Screenshots: $screenshots"
fi
