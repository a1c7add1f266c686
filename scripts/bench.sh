#!/usr/bin/env bash
# bench.sh                    searches, table, upload, start and idle: about two minutes
# bench.sh preview OPTION...  the preview beside other players: about a quarter of an hour, and
#                             best with nothing else running. Options: bench.sh preview --help
# bench.sh upgrade            a supervised upgrade of six cameras: about three minutes
# Prints the program's figures, measured with a release build against simulated cameras in a
# private network and on a virtual screen. Nothing here passes or fails.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$root/build/release/bin
bench=$root/build/release/benchmarks
. "$root/scripts/lib/packages.sh"
. "$root/scripts/lib/network.sh"
player_packages="ffmpeg mpv gstreamer1.0-tools gstreamer1.0-x $sound_packages \
    libx11-dev libxext-dev"

if [ "${1:-}" != --inside ]; then
    # shellcheck disable=SC2086 # lists of names
    install_packages $build_packages $run_packages $screen_packages curl
    # shellcheck disable=SC2086
    [ "${1:-}" != preview ] || install_packages $player_packages
    cd "$root"
    cmake --preset release >/dev/null
    cmake --build --preset release
    if [ "${1:-}" = preview ]; then
        shift
        exec "$root/tests/support/run-test.sh" --display --network --sound -- \
            "$bench/bench-preview" "$bin/VorlynIPTool" "$bin/vorlyn-fleet" \
            --raw "$root/build/preview.csv" "$@"
    fi
    if [ "${1:-}" = upgrade ]; then
        exec "$root/tests/support/run-test.sh" --display --network -- "$bench/bench-upgrade"
    fi
    exec "$root/tests/support/run-test.sh" --display --network -- "$0" --inside
fi

camera=$VORLYN_TEST_CAMERA_PID
work=$(mktemp -d)
fleet=
stop_fleet() {
    [ -z "$fleet" ] || { kill "$fleet" && wait "$fleet" || true; }
    fleet=
}
finish() {
    stop_fleet
    rm -rf "$work"
}
trap finish EXIT

start_fleet() { # OPTION...
    stop_fleet
    start_cameras "$bin/vorlyn-fleet" "$work/ready" "$@" </dev/null
}

many="--count 2000 --no-addresses --http-port 0"
# shellcheck disable=SC2086 # a list of options
start_fleet $many --spread 1.5
"$bench/bench-search" veth-a 3 5 "2000 cameras over 1.5 s:"
# shellcheck disable=SC2086
start_fleet $many
"$bench/bench-search" veth-a 3 5 "2000 cameras at once:"
echo "  buffer of a socket: $(cat /proc/sys/net/core/rmem_default) bytes"

"$bench/bench-table" 5000

echo '{"cameras": [{"camera": 1, "rules": [{"on": "upload", "apply": false}]}]}' >"$work/sink.json"
truncate -s 64M "$work/firmware.bin"
upload() { # WHAT OPTION...: to a camera that does no more than take the image
    echo "upload to a camera that $1:"
    shift
    start_fleet --count 1 --first-address 10.77.0.11 --scenario "$work/sink.json" "$@"
    "$bench/bench-upload" 10.77.0.11 80 "$work/firmware.bin" 9
}
upload "checks the digest of the image" --sha256
upload "only counts the bytes"

# No streams: a program that plays is not idle.
echo '{"cameras": [{"camera": "all", "fields": {"rtsppath1": ""}}]}' >"$work/still.json"
start_fleet --count 8 --first-address 10.77.0.11 --scenario "$work/still.json"
"$bench/bench-program" "$bin/VorlynIPTool" "$bench/bare-window"
