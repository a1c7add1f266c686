# Sourced. What the packages of all systems are made with. $root is the tree.

packages=$root/build/packages

built_version() { # BUILD
    sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$1/CMakeCache.txt"
}

# The time of all files in a package, so that the same sources give the same package; without the
# sources' history it is the present one.
source_time() {
    echo "${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || date +%s)}"
}

fail() {
    echo "$*" >&2
    return 1
}

# fill_text FILE NAME=VALUE...: the text, with each @NAME@ replaced.
fill_text() {
    local text pair
    text=$(cat "$1")
    for pair in "${@:2}"; do
        text=${text//@${pair%%=*}@/"${pair#*=}"}
    done
    printf '%s\n' "$text"
}

# No file may tell where on this machine it was built.
check_no_folders() { # PACKED FOLDER...
    local folder found
    for folder in "${@:2}"; do
        found=$(grep -rlF -- "$folder/" "$1") || [ $? -eq 1 ] # none does
        [ -z "$found" ] || fail "$folder is named in $found"
    done
}
