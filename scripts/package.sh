#!/usr/bin/env bash
# Builds the programs for this system and packs them: build/packages/VorlynIPTool-VERSION-linux-x86_64.tar.gz
# Unpacked into any folder they run there. The same sources give the same archive.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/lib/packages.sh"
. "$root/scripts/lib/linux-pack.sh"

# shellcheck disable=SC2086 # a list of names
install_packages $build_packages
cd "$root"
cmake --preset release >/dev/null
cmake --build --preset release --target VorlynIPTool VorlynBench vorlyn-fleet WINPSK LanguageFiles
pack_linux "$root/build/release" "$packages"
