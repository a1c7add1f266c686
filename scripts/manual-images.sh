#!/usr/bin/env bash
# manual-images.sh [FOLDER]   makes the pictures of the manuals anew, in docs/images/manual or in
#                             FOLDER: both programs in both languages, with eight simulated cameras
#                             in a private network, a print server of their own and a virtual
#                             screen. About three minutes.
# With VORLYN_BUILD the programs of that build folder are shown and nothing is built.
# Places are clicked by their distance from the window's upper left corner; those that the texts of
# a language move stand at the end.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
out=$(realpath -m "${1:-$root/docs/images/manual}")
build=${VORLYN_BUILD:-$root/build/release}
. "$root/scripts/lib/packages.sh"
. "$root/scripts/lib/network.sh"
. "$root/scripts/lib/display.sh"

if [ -z "${VORLYN_TEST_CAMERA_PID:-}" ]; then
    # shellcheck disable=SC2086 # lists of names
    install_packages $build_packages $run_packages $screen_packages $printing_packages
    cd "$root"
    if [ -z "${VORLYN_BUILD:-}" ]; then
        cmake --preset release >/dev/null
        cmake --build --preset release --target VorlynIPTool VorlynBench vorlyn-fleet WINPSK \
            LanguageFiles
    fi
    mkdir -p "$out"
    exec "$root/tests/support/run-test.sh" --display --network --printing -- \
        "$root/scripts/manual-images.sh" "$out"
fi

work=$(mktemp -d)
camera=$VORLYN_TEST_CAMERA_PID
fleet= program=
stop() { # PID
    [ -z "$1" ] || { kill "$1" && wait "$1"; } 2>/dev/null || true
}
finish() {
    stop "$program"
    stop "$fleet"
    rm -rf "$work"
}
trap finish EXIT
trap 'exit 143' TERM INT

active() { xdotool getactivewindow; }
click() { xdotool mousemove --window "$(active)" "$1" "$2" sleep 0.2 click 1 sleep 0.4; }
key() { xdotool key --delay 60 "$@" sleep 0.4; }
write() { xdotool type --delay 20 "$1"; sleep 0.3; } # the rest of its line is text too
dialog() { await windows 2; sleep 0.5; } # a dialog has opened
closed() { await windows 1; sleep 0.5; }
order() { echo "$1" >&8; sleep 1; } # TEXT: to the cameras
# The title bar belongs to the window manager, so a picture of one window is cut out of the screen.
shot() { # NAME [CROP]
    xdotool mousemove 1599 999 sleep 0.6
    import -window root ${2:+-crop "$2"} png:- |
        convert png:- +repage +dither -colors 255 -strip "png8:$out/$1-$language.png"
}
dialog_shot() { # NAME
    local X Y WIDTH HEIGHT
    eval "$(xdotool getwindowgeometry --shell "$(active)" | grep -v SCREEN)"
    # X and Y count the frame twice.
    shot "$1" "$((WIDTH + 2))x$((HEIGHT + 22))+$((X - 2))+$((Y - 38))"
}
panel_shot() { shot "$1" "${2}x$3+0+548"; } # NAME WIDTH HEIGHT: of the tabs and what is below them

start() { # NAME: a copy of the program with settings of its own
    name=$1
    local folder=$work/$language/$1
    mkdir -p "$folder/configure"
    cat >"$folder/configure/configure.ini" <<END
[General]
langage=$language
search%20seconds=2
printer%20name=POSTEK_G6000
label%20width=40
label%20height=30
label%20column=2
label%20padding=2
label%20padding%20left=1.5
label%20padding%20right=1.5
END
    cp -r "$build/bin/$1" "$build/bin/language" "$build/fleet/libWINPSK.so" "$folder"
    "$folder/$1" >/dev/null 2>&1 &
    program=$!
    await windows 2 # the window, and its search
    await windows 1
    await picture
}
stop_program() {
    stop "$program"
    program=
}

tool_images() {
    start VorlynIPTool
    shot tool
    click 370 683 # "Set" of the address
    dialog
    click 195 20
    key Down Return # static
    dialog_shot address
    key Escape
    closed
    click "$printer" 14
    dialog
    dialog_shot printer-settings
    key Escape
    closed
    click "$scan_code" 14
    dialog
    key Tab
    write "MR2-X"
    key Tab
    write "SN-00041"
    key Tab Tab Tab
    write "KVMR2G0001A2B3C4"
    key Return
    sleep 1 # the label
    dialog_shot scan-station
    convert "$work/$language/$name/labels/label-000001.png" -resize 400 -bordercolor gray -border 1 \
        -strip "$out/label.png"
    stop_program
}

# factory_test DOWN [REPORT [PICTURE [ANSWER]]]: the test so many rows below, with the keys of a
# report from the first camera.
factory_test() {
    local i
    for ((i = 0; i < $1; i++)); do key Down; done
    key Return
    dialog
    [ -z "${2:-}" ] || order "report 1 {${2//$'\n'/}}"
    [ -z "${3:-}" ] || dialog_shot "$3"
    key "${4:-Return}"
    closed
}

bench_images() {
    start VorlynBench
    local i
    click "$version_select" 820
    dialog
    write "$work/1.0.0.bin"
    key Return
    closed
    key F5
    for i in 1 2 3 4 5; do
        dialog
        [ "$i" != 1 ] || dialog_shot question
        if [ "$i" = 3 ]; then key Escape; else key Return; fi
        sleep 0.5
    done
    closed
    shot production-tool

    click "${tabs[1]}" 547
    click 60 603 # image
    factory_test 0
    factory_test 1 '' '' Escape # speaker
    factory_test 2 # beep
    factory_test 2 '"function":"sdcard","totalsize":30436,"freesize":28112'
    factory_test 1 '"function":"wifi","result":"success","WifiList":[
        {"wifiname":"Workshop","Signal":92},{"wifiname":"Nursery","Signal":82},
        {"wifiname":"Neighbour 2.4G","Signal":41}]' factory-wifi
    factory_test 1 '"function":"temperature","temperature":23.4'
    factory_test 5 '"function":"bree","status":"body"' factory-breathing
    panel_shot factory-tests 1000 450
    click "${tabs[0]}" 547
    panel_shot test-table 1600 450

    click 1213 41 # all ticks
    click "${tabs[2]}" 547
    click 197 582
    key Down Return
    panel_shot network-settings 720 260

    click "${tabs[3]}" 547
    click "$firmware_select" 582
    dialog
    write "$work/1.2.0.bin"
    key Return
    closed
    click "$firmware_select" 619
    dialog
    xdotool windowsize --sync "$(active)" 720 330
    key Tab space # the button
    await windows 3
    sleep 10 # until the cameras are looked for
    dialog
    dialog_shot upgrade-result
    stop_program
}

take() { # LANGUAGE
    language=$1
    start_cameras "$build/bin/vorlyn-fleet" "$work/fleet" --count 8 --first-address 10.77.0.11 \
        --journal "$work/journal" <"$work/orders"
    tool_images
    bench_images
    stop "$fleet"
    fleet=
}

# What the queue gets is kept by nobody.
lpadmin -p POSTEK_G6000 -E -v "benchfile:$VORLYN_TEST_PRINT_FOLDER" -m raw 2>/dev/null
mkfifo "$work/orders"
exec 8<>"$work/orders"
echo firmware >"$work/1.0.0.bin"
cp "$work/1.0.0.bin" "$work/1.2.0.bin"
printer=300 scan_code=410 version_select=335 firmware_select=530 tabs=(160 250 365 500)
take en
printer=210 scan_code=300 version_select=335 firmware_select=481 tabs=(105 170 240 315)
take cn
