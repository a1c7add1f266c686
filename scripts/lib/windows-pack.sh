# Sourced, after windows-kit.sh. Packs the programs for Windows with all that they load: what they
# import, by following the imports, and Qt's plug-ins. Windows' own libraries stay out.
. "$root/scripts/lib/packing.sh"
. "$root/scripts/lib/windows-licences.sh"

pack_packages="zip qttranslations5-l10n"
chinese_texts=/usr/share/qt5/translations/qtbase_zh_CN.qm # of Qt's own dialogs and menus
plugins="audio/*.dll imageformats/*.dll platforms/qwindows.dll printsupport/*.dll styles/*.dll"
# Part of every Windows from 7 on.
system_libraries="advapi32.dll bcrypt.dll comdlg32.dll crypt32.dll d3d11.dll d3d9.dll dnsapi.dll \
    dwmapi.dll dxgi.dll gdi32.dll imm32.dll iphlpapi.dll kernel32.dll mpr.dll msvcrt.dll netapi32.dll \
    ole32.dll oleaut32.dll secur32.dll shell32.dll user32.dll userenv.dll uxtheme.dll version.dll \
    winmm.dll winspool.drv ws2_32.dll wtsapi32.dll"

imports() { "$host-objdump" -p "$1" | awk '/DLL Name:/ { print $3 }'; } # PROGRAM
of_system() { [[ " $system_libraries " == *" ${1,,} "* ]]; } # LIBRARY

# A library of the kit's, or one of the compiler's.
find_library() { # NAME
    local file=$kit/bin/$1
    [ -e "$file" ] || file=$("$host-g++-posix" -print-file-name="$1")
    [ -e "$file" ] && readlink -f "$file"
}

# Copies what the programs import into the folder, and what that imports.
add_imports() { # FOLDER PROGRAM...
    local folder=$1 program names name file
    for program in "${@:2}"; do
        names=$(imports "$program")
        for name in $names; do
            if [ -e "$folder/$name" ] || of_system "$name"; then continue; fi
            file=$(find_library "$name") ||
                fail "$program needs $name, which is neither Windows' nor in $kit/bin"
            cp "$file" "$folder/$name"
            add_imports "$folder" "$folder/$name"
        done
    done
}

add_plugins() { # FOLDER
    # shellcheck disable=SC2086 # lists of patterns
    (cd "$kit/plugins" && cp --parents $plugins "$1")
    # shellcheck disable=SC2086
    (cd "$1" && add_imports . $plugins)
    # Or Qt would look for more in folders outside of the program's own.
    printf '[Paths]\r\nPrefix = .\r\nPlugins = .\r\n' >"$1/qt.conf"
}

# Makes the folder of a package.
lay_out_windows() { # BUILD FOLDER VERSION
    local simulation=$2/label-printer-simulation
    cmake --install "$1" --prefix "$2" --component programs
    add_imports "$2" "$2"/*.exe "$simulation/WINPSK.dll"
    add_plugins "$2"
    install -Dt "$2/translations" -m 644 "$chinese_texts"
    find "$2" \( -name '*.exe' -o -name '*.dll' \) -exec "$host-strip" -p {} +
    check_no_folders "$2" "$root" "$1" "$cache"
    add_licences "$2"
    fill_text "$root/packaging/label-printer-simulation.txt" LIBRARY=WINPSK.dll >"$simulation/README.txt"
    fill_text "$root/packaging/README.windows.txt" VERSION="$3" >"$2/README.txt"
    find "$2/licenses" "$2"/README.txt "$simulation" -name '*.txt' -exec sed -i 's/\r*$/\r/' {} +
}

# An archive of this kind tells times in steps of two seconds.
even_time() { echo $(($(source_time) / 2 * 2)); }

# Packs into the folder OUT and says which file it made.
pack_windows() ( # [BUILD [OUT]]
    set -eo pipefail # in a $(...) too
    build=${1:-$root/build/windows} out=${2:-$packages}
    version=$(built_version "$build")
    name=VorlynIPTool-$version
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    lay_out_windows "$build" "$work/$name" "$version"
    chmod -R u=rwX,go=rX "$work/$name"
    find "$work/$name" -exec touch -d "@$(even_time)" {} +
    mkdir -p "$out"
    out=$(cd "$out" && pwd)/$name-win64.zip
    rm -f "$out"
    (cd "$work" && find "$name" -type f | LC_ALL=C sort | TZ=UTC zip -9DXq@ "$out")
    echo "$out"
)
