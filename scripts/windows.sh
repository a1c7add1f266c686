#!/usr/bin/env bash
# windows.sh          builds the programs for 64-bit Windows and packs them:
#                     build/packages/VorlynIPTool-VERSION-win64.zip
# windows.sh --test   builds them and their tests and runs those under Wine, with the cameras outside
#                     of Wine; arguments that follow go to ctest
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

# Objects stay in the cache too, so that a fresh clone compiles what has changed alone.
export CCACHE_DIR=$cache/ccache CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

configure() {
    VORLYN_WINDOWS_KIT=$kit VORLYN_NATIVE_BUILD=$native cmake --preset windows
}
build_native() {
    cmake --preset release
    cmake --build --preset release --target vorlyn-fleet camera-peer
}
list_left_out() {
    echo "Not run under Wine:"
    sed 's/^/  /' "$root/build/windows/not-on-windows.txt"
}

cd "$root"
# shellcheck disable=SC2086 # lists of names
step packages install_packages $build_packages $kit_packages zip
make_windows_kit
native=${VORLYN_NATIVE_BUILD:-$root/build/release}
step configure configure
if [ -z "$test" ]; then
    step build cmake --build --preset windows --target VorlynIPTool VorlynBench WINPSK LanguageFiles
    step pack pack_windows
    exit
fi
# shellcheck disable=SC2086 # lists of names
step test-packages install_packages $run_packages $screen_packages $sound_packages \
    $printing_packages $wine_packages
[ -n "${VORLYN_NATIVE_BUILD:-}" ] || step fleet build_native
step build-with-tests cmake --build --preset windows
list_left_out
ctest --preset windows "$@"
