#!/usr/bin/env bash
# run-test.sh [--display] [--network] [--sound] [--printing] [--wine] -- COMMAND...
# Runs one test program with what it needs, takes it all down again and ends with its status.
#   --display  a screen of its own (scripts/lib/display.sh)
#   --network  a private network, made afresh (scripts/lib/network.sh). VORLYN_TEST_CAMERA_PID
#              names a process in the cameras' namespace:
#              "nsenter -t $VORLYN_TEST_CAMERA_PID -n COMMAND" runs there.
#   --sound    a sound server of its own (scripts/lib/sound.sh)
#   --printing a print server of its own (scripts/lib/printing.sh). VORLYN_TEST_PRINT_FOLDER is
#              where each printed job becomes a file NUMBER.pdf.
#   --wine     the command is a Windows program, run under Wine (scripts/lib/wine.sh), with a display,
#              or a script that runs some.
#              VORLYN_TEST_DOOR is how it starts programs outside of Wine (door.py).
set -eu
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../../scripts/lib/network.sh"
. "$here/../../scripts/lib/display.sh"
. "$here/../../scripts/lib/sound.sh"
. "$here/../../scripts/lib/printing.sh"
. "$here/../../scripts/lib/wine.sh"

arguments=("$@")
display= network= sound= printing= wine=
while [ $# -gt 0 ]; do
    case $1 in
        --display) display=1 ;;
        --network) network=1 ;;
        --sound) sound=1 ;;
        --printing) printing=1 ;;
        --wine) wine=1 display=1 ;;
        --) shift; break ;;
        *) echo "run-test.sh: unknown option $1" >&2; exit 2 ;;
    esac
    shift
done
# The print server can't start in a user namespace: the rest runs inside of its life.
[ -z "${VORLYN_TEST_PRINT_FOLDER:-}" ] || printing=
if [ -z "$printing" ]; then
    [ -z "$wine" ] || enter_wine "$0" "${arguments[@]}"
    [ -z "$network" ] || enter_network "$0" "${arguments[@]}"
fi

work=$(mktemp -d)
camera= display_pids= sound_pid= printing_pid= door_pid=
finish() {
    local pids="$camera $display_pids $sound_pid $printing_pid $door_pid" pid
    end_wine
    for pid in $pids; do kill "$pid" 2>/dev/null || true; done
    for pid in $pids; do wait "$pid" 2>/dev/null || true; done
    rm -rf "$work"
}
trap finish EXIT
trap 'exit 143' TERM INT

# Whom the user hears and prints with is no part of a test.
export PULSE_SERVER=unix:$work/no-sound
[ -n "${VORLYN_TEST_PRINT_FOLDER:-}" ] || export CUPS_SERVER=$work/no-printing

if [ -n "$printing" ]; then
    make_printing "$work"
    "$0" "${arguments[@]}"
    exit
fi
if [ -n "$network" ]; then
    make_network
    export VORLYN_TEST_CAMERA_PID=$camera
fi
[ -z "$display" ] || make_display "$work"
[ -z "$sound" ] || make_sound "$work"
if [ -n "$wine" ]; then
    make_wine "$work"
    python3 "$here/door.py" "$work/door" &
    door_pid=$!
    await test -e "$work/door"
    VORLYN_TEST_DOOR=$(cat "$work/door")
    export VORLYN_TEST_DOOR
    [ "${1%.exe}" = "$1" ] || set -- wine "$@"
fi

"$@"
