# Sourced, after network.sh for await. A screen of its own with a window manager: without one a
# maximised window keeps its size and no window is ever active. 96 dpi pins fonts and sizes.

window_manager() { timeout 5 xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }

make_display() { # FOLDER: sets DISPLAY and $display_pids
    export XDG_RUNTIME_DIR=$1
    # -noreset: else the server starts afresh, and openbox dies, when a first client leaves alone.
    Xvfb -noreset -displayfd 8 -screen 0 1600x1000x24 -dpi 96 -nolisten tcp 8>"$1/display" 2>/dev/null &
    display_pids=$!
    await test -s "$1/display"
    DISPLAY=:$(cat "$1/display")
    export DISPLAY
    openbox --sm-disable >/dev/null 2>&1 &
    display_pids="$! $display_pids"
    await window_manager
}

# windows N: exactly N windows of the program $name are on the screen.
windows() { [ "$(xdotool search --onlyvisible --class "$name" 2>/dev/null | wc -l)" -eq "$1" ]; }
# The preview of the chosen camera shows a picture, seen by its light.
picture() { import -window root -crop 400x200+200+60 -format '%[fx:mean > 0.1]' info: | grep -qx 1; }
