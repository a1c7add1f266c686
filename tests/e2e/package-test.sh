# Sourced by the tests of the packages, after network.sh for await.
. "$root/scripts/lib/display.sh"

# expect TEXT COMMAND...: the command succeeds.
expect() {
    local text=$1
    shift
    "$@" >/dev/null || { echo "FAIL: $text" >&2; exit 1; }
    echo "PASS: $text"
}
same() { diff <(printf '%s\n' "$1") <(printf '%s\n' "$2") >&2; } # EXPECTED FOUND

# use NAME COMMAND...: starts a program, waits until its search is over and whatever else $seen says,
# and closes its window.
use() {
    local program name=$1
    "${@:2}" &
    program=$!
    await windows 2
    await windows 1
    ${seen:-true}
    xdotool windowactivate --sync "$(xdotool search --onlyvisible --class "$name")" key alt+F4
    wait "$program"
}
