#!/usr/bin/env bash
# Compiles what only Windows builds, without making anything of it and with warnings as errors: the
# Windows siblings, the sources that stand behind if(WIN32) in a CMakeLists.txt, the resource scripts.
# It needs the cross compiler and this system's Qt and FFmpeg headers, nothing built for Windows.
# One line a file; ends with 1 when one of them fails, having tried all.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/lib/packages.sh

# shellcheck disable=SC2086 # lists of names
install_packages $build_packages g++-mingw-w64-x86-64-posix
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Those of the name, and those that CMake adds for Windows. "none" is what stands for a library that is
# missing there.
windows_sources() {
    find src fleet tests -name '*_win.cpp' -o -name '*_d3d9.cpp' -o -name '*_none.cpp'
    find src fleet tests -name CMakeLists.txt -exec awk '
        /^ *if\(WIN32/ { on = 1 }
        /^ *(else|endif)\(/ { on = 0 }
        on {
            gsub(/\$\{CMAKE_CURRENT_SOURCE_DIR\}\//, "")
            folder = FILENAME
            sub("/[^/]*$", "/", folder)
            while (match($0, /[^ ()]+\.cpp/)) {
                print folder substr($0, RSTART, RLENGTH)
                $0 = substr($0, RSTART + RLENGTH)
            }
        }' {} +
}
listed=$(windows_sources | xargs realpath -e --relative-to=. | sort -u)
mapfile -t sources <<<"$listed"
mapfile -t scripts < <(find src fleet -name '*.rc' | sort)
[ -n "$listed" ] # an empty list would pass unseen
[ ${#scripts[@]} -gt 0 ]

# Of the system's folder only what belongs to no system: its other headers are the C library's.
headers=$work/headers
mkdir "$headers"
ln -s "$(pkg-config --variable=includedir libavutil)"/lib{av,sw}* "$headers"
qt=$(pkg-config --variable=includedir Qt5Core)
includes=(-isystem "$headers" -isystem "$qt")
while read -r folder; do
    includes+=(-I "$folder")
done < <(find src fleet tests -name '*.h' -printf '%h\n' | sort -u)
mapfile -t definitions < <(sed -nE 's/^ +(QT_[A-Z_]+(=[^ )]+)?).*/-D\1/p' cmake/ProjectOptions.cmake)
definitions+=(-DUNICODE -D_UNICODE) # as Qt for Windows asks for
for module in Core Gui Widgets Network Multimedia PrintSupport Test; do
    includes+=(-isystem "$qt/Qt$module")
    definitions+=("-DQT_${module^^}_LIB")
done

# What the folder's CMakeLists.txt defines as a text is some path.
texts_of() { # FOLDER
    grep -ohE '\b[A-Z][A-Z_]+="' "$1/CMakeLists.txt" | sort -u | sed 's/="$/="path"/; s/^/-D/'
}

check_source() { # FILE
    local moc texts
    moc=$(basename "$1" .cpp).moc
    mapfile -t texts < <(texts_of "${1%/*}")
    if grep -q "#include \"$moc\"" "$1"; then
        "$(pkg-config --variable=host_bins Qt5Core)/moc" "$1" -o "$work/$moc"
    fi
    # Some warnings, as of what is unused, come later than the syntax.
    x86_64-w64-mingw32-g++-posix -S -o /dev/null -std=c++17 -Wall -Wextra -Werror \
        "${definitions[@]}" "${texts[@]}" -I "$work" "${includes[@]}" "$1"
}

# The manifest that it takes in as it is before CMake fills in name and version.
check_script() { # FILE
    cp "${1%.rc}.manifest.in" "$work/Program.manifest"
    x86_64-w64-mingw32-windres -I "$work" -D VORLYN_PROGRAM=Program -D VORLYN_TITLE=Title \
        -D VORLYN_VERSION=1.2.3 -D VORLYN_VERSION_NUMBERS=1,2,3,0 "$1" -O coff "$work/resource.o"
}

failed=0
check() { # FUNCTION FILE
    if "$@" 2>"$work/errors"; then
        echo "good    $2"
    else
        echo "FAILED  $2"
        cat "$work/errors" >&2
        failed=1
    fi
}
for file in "${sources[@]}"; do check check_source "$file"; done
for file in "${scripts[@]}"; do check check_script "$file"; done
exit $failed
