# Sourced, after packages.sh, with pipefail. Packs a build of this system's programs.
. "$root/scripts/lib/packing.sh"

# The files of the distribution that a program is linked with, one a line.
linked_files() { # PROGRAM...
    local program
    for program in "$@"; do
        ldd "$program" |
            grep -F "$(objdump -p "$program" | awk '$1 == "NEEDED" { print "\t" $2 " " }')"
    done | awk '{ print $3 }' | sort -u
}

# The packages that these come from. A file may be known by its place before /lib became /usr/lib.
linked_packages() { # PROGRAM...
    local file
    linked_files "$@" | while read -r file; do
        dpkg-query -S "$file" 2>/dev/null || dpkg-query -S "/usr$file"
    done | sed 's/:.*//' | sort -u
}

# As many names a line as fit, behind what a shell is told to install them with.
apt_lines() { # NAME...
    echo "apt-get install $*" | fold -s -w 88 | sed -e 's/ *$//' -e '$!s/$/ \\/' -e 's/^/    /'
}

linux_readme() { # FOLDER VERSION
    local programs cameras
    programs=$(linked_packages "$1"/Vorlyn* "$1"/*/*.so)
    cameras=$(linked_packages "$1/vorlyn-fleet")
    # shellcheck disable=SC2086 # lists of names
    programs=$(printf '%s\n' $programs $program_packages | sort -u)
    # shellcheck disable=SC2086
    cameras=$(printf '%s\n' $cameras $camera_packages | sort -u | grep -vxF "$programs")
    # shellcheck disable=SC2086
    fill_text "$root/packaging/README.linux.txt" VERSION="$2" \
        SYSTEM="$(. /etc/os-release && echo "$PRETTY_NAME")" \
        PROGRAM_PACKAGES="$(apt_lines $programs)" CAMERA_PACKAGES="$(apt_lines $cameras)"
}

# Makes the folder of a package. Installing takes the build's folders out of the programs' search
# paths; debug builds still name their sources' folders.
lay_out_linux() { # BUILD FOLDER VERSION
    cmake --install "$1" --prefix "$2" --strip >/dev/null
    fill_text "$root/packaging/label-printer-simulation.txt" LIBRARY=libWINPSK.so \
        >"$2/label-printer-simulation/README.txt"
    linux_readme "$2" "$3" >"$2/README.txt"
    ! grep -q '^CMAKE_BUILD_TYPE:STRING=Release$' "$1/CMakeCache.txt" ||
        check_no_folders "$2" "$root" "$1"
}

# Packs into the folder OUT and says which file it made.
pack_linux() ( # BUILD OUT
    set -e # in a $(...) too
    build=$1 out=$2
    version=$(built_version "$build")
    name=VorlynIPTool-$version
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    lay_out_linux "$build" "$work/$name" "$version"
    mkdir -p "$out"
    tar -C "$work" --sort=name --owner=0 --group=0 --numeric-owner --mode=u=rwX,go=rX \
        --mtime="@$(source_time)" --format=gnu -c "$name" | gzip -9n >"$out/$name-linux-x86_64.tar.gz"
    echo "$out/$name-linux-x86_64.tar.gz"
)
