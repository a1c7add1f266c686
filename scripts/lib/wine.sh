# Sourced. Wine for Windows programs, in a prefix of its own for each test: several run at once, and
# each one's wineserver lives in the test's own network, as it is the wineserver that opens the
# sockets.
# The prefix is a copy, mostly hard links, of one that is made once, in the cache.

wine_library=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$wine_library/windows-cache.sh"
wine_cache=$cache/wine
wine_started=

# A crash ends the program at once. Sound goes to the sound server that the test has, or nowhere.
# Dialogs' fonts are the same as everywhere; printing with Wine's own one brings it down. Qt writes its
# messages as elsewhere, which Wine doesn't let it be told by this system's environment.
wine_settings() {
    cat <<'REG'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\AeDebug]
"Auto"="1"
"Debugger"="none"

[HKEY_CURRENT_USER\Environment]
"QT_FORCE_STDERR_LOGGING"="1"

[HKEY_CURRENT_USER\Software\Wine\Drivers]
"Audio"="pulse"

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes]
"MS Shell Dlg"="DejaVu Sans"
"MS Shell Dlg 2"="DejaVu Sans"

[HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements]
"Tahoma"="DejaVu Sans"
"Arial"="Liberation Sans"
"Arial Narrow"="Liberation Sans Narrow"
"Segoe UI"="DejaVu Sans"
"SimSun"="WenQuanYi Micro Hei"
"Microsoft YaHei"="WenQuanYi Micro Hei"
REG
}

# The mended display driver (mend-winex11.py) in place of the system's, but only for what is started
# from here.
mended_driver() { # DRIVER: prints the mended copy's path
    local mended
    mended=$wine_cache/winex11-$(cksum <"$1" | cut -d ' ' -f 1).so
    if [ ! -e "$mended" ]; then
        mkdir -p "$wine_cache"
        python3 "$wine_library/mend-winex11.py" "$1" "$mended.$$" || return
        mv "$mended.$$" "$mended"
    fi
    echo "$mended"
}

# enter_wine SCRIPT ARGUMENT...: runs the script again where the display driver is the mended one,
# once. Everybody is root there, whose name Wine takes for the user's.
enter_wine() {
    local driver mended
    if [ -n "${VORLYN_IN_WINE:-}" ]; then return; fi
    export VORLYN_IN_WINE=1
    driver=$(find /usr/lib /opt -path '*x86_64-unix/winex11.so' -print -quit 2>/dev/null || true)
    if [ -n "$driver" ] && mended=$(mended_driver "$driver"); then
        exec unshare -rm sh -c 'mount --bind "$1" "$2"; shift 2; exec "$@"' sh \
            "$mended" "$driver" "$@"
    fi
    echo "wine.sh: nothing to mend in Wine's display driver, it is used as it is" >&2
    exec unshare -r "$@"
}

# Of this version, with these settings.
wine_stamp() { wine --version; cksum <"$wine_library/wine.sh"; }

# What Wine links to in the user's home become folders, so that no test writes there.
part_from_home() { # PREFIX
    local link
    find "$1/drive_c/users" -type l | while read -r link; do
        rm "$link"
        mkdir "$link"
    done
}

make_template() {
    local template=$wine_cache/template
    rm -rf "$template"
    mkdir -p "$template"
    WINEPREFIX=$template HOME=$template wineboot -i
    wine_settings >"$template/settings.reg"
    WINEPREFIX=$template wine regedit /S "$template/settings.reg"
    WINEPREFIX=$template wineserver -w
    part_from_home "$template"
    rm -f "$template/wineserver" # names a folder of sockets, which each copy has to find for itself
    # As part of a condition, nothing ends this function on the way.
    grep -q QT_FORCE_STDERR_LOGGING "$template/user.reg" && wine_stamp >"$wine_cache/template.stamp"
}

# One makes it, and the others wait.
need_template() {
    mkdir -p "$wine_cache"
    (
        flock 9
        [ "$(wine_stamp)" = "$(cat "$wine_cache/template.stamp" 2>/dev/null)" ] ||
            make_template >"$wine_cache/template.log" 2>&1
    ) 9>"$wine_cache/lock" || {
        echo "no Wine prefix could be made, see $wine_cache/template.log" >&2
        exit 3
    }
}

copy_template() { # PREFIX
    cp -al "$wine_cache/template" "$1" 2>/dev/null || {
        rm -rf "$1"
        cp -a "$wine_cache/template" "$1"
        return
    }
    # What Wine writes are files of the test's own.
    local file
    for file in "$wine_cache/template"/*.reg; do
        cp --remove-destination "$file" "$1/"
    done
}

# Where programs find their DLLs, as Windows says it.
dll_folders() {
    local dll path=
    for dll in libstdc++-6.dll libwinpthread-1.dll; do
        path+=";$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=$dll)")"
    done
    [ -z "${VORLYN_WINDOWS_KIT:-}" ] || path="$VORLYN_WINDOWS_KIT/test/bin;$VORLYN_WINDOWS_KIT/bin$path"
    sed 's,;,;Z:,g; s,^/,Z:/,; s,^;,,; s,/,\\,g' <<<"$path"
}

make_wine() { # FOLDER: sets WINEPREFIX and how Wine works
    export WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=' WINEPATH
    WINEPATH=$(dll_folders)
    export LC_ALL=C.UTF-8 # else no file has a name that isn't ASCII
    export TMPDIR=$1 # for Wine's own files
    need_template
    export WINEPREFIX=$1/wine
    copy_template "$WINEPREFIX"
    wine_started=1
}

end_wine() { [ -z "$wine_started" ] || wineserver -k -w 2>/dev/null || true; }
