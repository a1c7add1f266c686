# Sourced by windows-pack.sh. The licences of the libraries in a package for Windows, and an index of
# them: which library is whose, under which licence, and where its source is from. A library that no
# entry claims is an error.

# The version of a source package that the kit was built from.
kit_version() { # SOURCE
    local file
    file=$(find "$cache/src" -name "$1_*.dsc" | sort -V | tail -n 1)
    [ -n "$file" ] ||
        file=$(find "$cache/src" -name "$1_*.orig.tar.*[!c]" | sort -V | tail -n 1)
    file=${file##*_}
    file=${file%.dsc}
    echo "${file%.orig.tar.*}"
}

# Prints an entry of the index and copies its texts. LIBRARIES are patterns; what an earlier entry has
# claimed is not claimed again.
entry() { # FOLDER LIBRARIES SOURCE VERSION LICENCE TEXT...
    local place=$1/licenses/$3 text mine
    mkdir -p "$place"
    [ -n "$4" ] || fail "no version of $3"
    # shellcheck disable=SC2086 # a list of patterns
    mine=$(cd "$1" && shopt -s nullglob && printf '%s\n' $2 | grep -vxF -f licenses/claimed)
    echo "$mine" >>"$1/licenses/claimed"
    printf '\n%s\n' "$mine"
    echo "  $5"
    echo "  Source: package $3, version $4"
    for text in "${@:6}"; do
        cp "$text" "$place/$(basename "$text").txt"
        echo "  $3/$(basename "$text").txt"
    done
}

of_kit() { # FOLDER LIBRARIES SOURCE LICENCE TEXT...
    local source texts=("${@:5}")
    source=$(source_of "$3")
    entry "$1" "$2" "$3" "$(kit_version "$3")" "$4" "${texts[@]/#/$source/}"
}

# What is a file of the distribution's packages.
of_package() { # FOLDER FILES LICENCE FILE [TEXT...]
    local package source version of
    package=$(dpkg-query -S "$4" | sed 's/:.*//')
    read -r source version of <<<"$(dpkg-query -W \
        -f '${source:Package} ${source:Version} ${Built-Using}' "$package")"
    entry "$1" "$2" "$source" "$version${of:+, with $of}" "$3" \
        "/usr/share/doc/$package/copyright" "${@:5}"
}

of_compiler() { # FOLDER LIBRARIES LICENCE [TEXT...]
    of_package "$1" "$2" "$3" "$(find_library "${2%% *}")" "${@:4}"
}

index_head() {
    cat <<END
The libraries that the programs come with, and their licences. The sources are source packages of
$(. /etc/os-release && echo "$PRETTY_NAME"). The libraries were built from them with the changes and
settings of scripts/lib/windows-kit.sh in the programs' own source, but for those of gcc-mingw-w64,
mingw-w64 and qttranslations, which are the distribution's. Each may be replaced by another build of it.
END
}

index_entries() { # FOLDER
    local lgpl3="GNU Lesser General Public License, version 3"
    local lgpl2="GNU Lesser General Public License, version 2.1 or later"
    local qt=qtbase-opensource-src
    of_kit "$1" "Qt5Multimedia.dll audio/*.dll" qtmultimedia-opensource-src "$lgpl3" \
        LICENSE.LGPL3 LICENSE.GPL3
    of_kit "$1" "Qt5*.dll imageformats/*.dll platforms/*.dll printsupport/*.dll styles/*.dll" $qt \
        "$lgpl3" LICENSE.LGPL3 LICENSE.GPL3
    echo "  They hold work of others:"
    python3 "$root/scripts/lib/qt-licences.py" "$(source_of $qt)" "$1/licenses/$qt" $qt
    of_kit "$1" "av*.dll sw*.dll" ffmpeg "$lgpl2" COPYING.LGPLv2.1 LICENSE.md
    of_kit "$1" libqrencode.dll qrencode "$lgpl2" COPYING
    of_package "$1" "translations/*.qm" \
        "GNU General Public License, version 3, with the Qt Company GPL Exception 1.0" \
        "$chinese_texts" /usr/share/common-licenses/GPL-3
    of_compiler "$1" "libstdc++-6.dll libgcc_s_seh-1.dll" \
        "GNU General Public License, version 3, with the GCC Runtime Library Exception, version 3.1" \
        /usr/share/common-licenses/GPL-3
    of_compiler "$1" libwinpthread-1.dll "of the files below mingw-w64-libraries/winpthreads"
    echo "  Start-up code of the same package, below mingw-w64-crt, is in all programs and libraries."
}

# The kit has FFmpeg a second time, with parts under another licence, which are for tests alone.
check_ffmpeg() { # FOLDER
    local file
    for file in "$1"/av*.dll "$1"/sw*.dll; do
        grep -aq 'license: LGPL version 2.1' "$file" || fail "$file is not under the LGPL"
    done
}

check_claims() { # FOLDER
    local found
    found=$(cd "$1" && find . -name '*.dll' ! -name WINPSK.dll -printf '%P\n')
    found=$(grep -vxF -f "$1/licenses/claimed" <<<"$found") || [ $? -eq 1 ] # nothing is left over
    [ -z "$found" ] || fail "no licence is known of $found"
}

add_licences() { # FOLDER
    check_ffmpeg "$1"
    mkdir "$1/licenses"
    touch "$1/licenses/claimed"
    { index_head; index_entries "$1"; } >"$1/licenses/INDEX.txt"
    check_claims "$1"
    rm "$1/licenses/claimed"
}
