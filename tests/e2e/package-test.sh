# Sourced by the tests of the packages, after network.sh for await.
. "$root/scripts/lib/display.sh" # for picture

# expect TEXT COMMAND...: the command succeeds.
expect() {
    local text=$1
    shift
    "$@" >/dev/null || { echo "FAIL: $text" >&2; exit 1; }
    echo "PASS: $text"
}
same() { diff <(printf '%s\n' "$1") <(printf '%s\n' "$2") >&2; } # EXPECTED FOUND

# use NAME COMMAND...: starts a program in this folder, waits until it has searched and whatever else
# $seen says, and closes its window, behind what stands before it.
patience=60
searches=0
use() {
    local program name=$1
    "${@:2}" &
    program=$!
    searches=$((searches + 1))
    await searched
    ${seen:-true}
    await closed
    wait "$program"
}
searched() { [ "$(grep -l '"method":"search"' log/*.clog | wc -l)" -eq $searches ]; }
closed() {
    xdotool windowactivate "$(xdotool search --onlyvisible --class "$name" | head -n 1)" key alt+F4
    ! kill -0 "$program"
}
