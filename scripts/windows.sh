#!/usr/bin/env bash
# windows.sh          builds the programs for 64-bit Windows and their tests, and packs the programs:
#                     build/packages/VorlynIPTool-VERSION-win64.zip
# windows.sh --test   also runs the tests under Wine, with the cameras outside of Wine; arguments that
#                     follow go to ctest
# What they need (Qt, FFmpeg, libqrencode for Windows) is built once, from the distribution's source
# packages, in the folder $VORLYN_WINDOWS_CACHE (default: vorlyn-windows in the user's cache folder).
# VORLYN_NATIVE_BUILD names a build folder of this system's whose vorlyn-fleet serves the tests;
# without it build/release is built.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/lib/packages.sh"
. "$root/scripts/lib/windows-kit.sh"
. "$root/scripts/lib/windows-pack.sh"
test=
if [ "${1:-}" = --test ]; then
    test=1
    shift
fi

keep_objects

configure() {
    VORLYN_WINDOWS_KIT=$kit VORLYN_NATIVE_BUILD=$native cmake --preset windows
}
build_native() {
    cmake --preset release
    cmake --build --preset release --target vorlyn-fleet camera-peer
}
# Whole programs, then functions that were skipped.
list_left_out() {
    local build=$root/build/windows
    echo "Not run under Wine:"
    sed 's/^/  /' "$build/not-on-windows.txt"
    tr -d '\r' <"$build/Testing/Temporary/LastTest.log" | sed -n 's/^SKIP *: */  /p'
}

cd "$root"
# shellcheck disable=SC2086 # lists of names
step packages install_packages $build_packages $kit_packages $pack_packages $wine_packages
make_windows_kit
native=${VORLYN_NATIVE_BUILD:-$root/build/release}
step configure configure
step build cmake --build --preset windows
step pack pack_windows
tail -n 1 "$cache/logs/pack.log" # which file
[ -n "$test" ] || exit 0

# shellcheck disable=SC2086 # lists of names
step test-packages install_packages unzip $run_packages $screen_packages $sound_packages \
    $printing_packages
[ -n "${VORLYN_NATIVE_BUILD:-}" ] || step fleet build_native
status=0
ctest --preset windows "$@" || status=$?
list_left_out
exit $status
