#!/usr/bin/env bash
# Installs what is missing, builds with AddressSanitizer and UndefinedBehaviorSanitizer and runs
# all tests, unit and end to end. Arguments go to ctest: test.sh -R ZRLog
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/lib/packages.sh"

# shellcheck disable=SC2086 # lists of names
install_packages $build_packages $run_packages $screen_packages $sound_packages \
    $printing_packages curl libqt5svg5-dev
cd "$root"
scripts/check-sources.sh
cmake --preset debug >/dev/null
cmake --build --preset debug
ctest --preset debug "$@"
