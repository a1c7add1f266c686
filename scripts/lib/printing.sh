# Sourced, after network.sh for await. A print server of its own with three queues: LABEL-300, a
# label printer of any paper size, EDGE-BENCH, one that can't print on the outer 9 points, and
# RAW-BENCH, which takes what it gets. A printed job is the file out/NUMBER.pdf. Nothing is read of,
# or written to, the system's print server.
# Root's server works as the user lp, who has to reach the folder; anybody else's as himself. In a
# user namespace root has no other user to become: start it outside, its socket is reached from
# there.

# The system's programs but for a back end that keeps each job as a file. The server demands that
# root owns it and nobody else may write it. The server itself is a copy: what the system forbids
# its own one by the name of its file doesn't hold for this one.
make_print_programs() { # FOLDER
    local name
    mkdir -p "$1/bin/backend"
    for name in cgi-bin daemon driver filter monitor notifier; do
        ln -s "/usr/lib/cups/$name" "$1/bin/$name"
    done
    cat >"$1/bin/backend/benchfile" <<'END'
#!/bin/sh
# Without arguments a list of printers, else: job user title copies options [file]
[ $# -gt 0 ] || { echo 'direct benchfile "Unknown" "Files of the test bench"'; exit; }
umask 022
folder=${DEVICE_URI#benchfile:}
cat ${6:+"$6"} >"$folder/.$1" && mv "$folder/.$1" "$folder/$1.pdf"
END
    cp "$(command -v cupsd)" "$1/bin/cupsd"
    chmod -R go-w "$1/bin"
    chmod 755 "$1/bin/backend/benchfile"
}

write_print_configuration() { # FOLDER
    cat >"$1/etc/cups-files.conf" <<END
ServerRoot $1/etc
ServerBin $1/bin
ServerKeychain $1/etc/ssl
RequestRoot $1/spool
TempDir $1/spool/tmp
CacheDir $1/cache
StateDir $1/state
AccessLog $1/log/access
ErrorLog $1/log/error
PageLog $1/log/page
Printcap
SystemGroup $(id -gn)
User $2
Group $(id -gn "$2")
END
    cat >"$1/etc/cupsd.conf" <<END
Listen $1/socket
Browsing No
DefaultAuthType None
WebInterface No
<Location />
    Order allow,deny
    Allow all
</Location>
<Policy default>
    <Limit All>
        Order deny,allow
    </Limit>
</Policy>
END
}

check_lp_reaches() { # FOLDER
    setpriv --reuid lp --regid lp --clear-groups test -x "$1" || {
        echo "the user lp can't reach $1: set TMPDIR to a folder that everybody may enter" >&2
        exit 3
    }
}

print_server() { LC_ALL=C lpstat -r | grep -q "is running"; }

add_queue() { # NAME FOLDER OPTION...
    local name=$1 folder=$2 answer
    shift 2
    # What it says of queues that work is that such queues are old.
    answer=$(lpadmin -p "$name" -E -v "benchfile:$folder/out" "$@" 2>&1) || {
        echo "no queue $name: $answer" >&2
        exit 3
    }
}

# The tests' strips, of which Wine prints only those that the printer names.
strip_sizes="44x20 44x21 44x30 44x80 47x10 87x30 130x30 161x30" # millimetres

label_ppd() { # PPD SIZE...: prints it with these sizes beside its own
    local ppd=$1
    shift
    awk -v sizes="$*" '
        function points(mm) { return int(mm * 72 / 25.4 + 0.5) }
        { print }
        /40 x 30 mm/ {
            count = split(sizes, size, " ")
            for (i = 1; i <= count; i++) {
                split(size[i], side, "x")
                line = $0
                sub(/w113h85/, "w" points(side[1]) "h" points(side[2]), line)
                sub(/40 x 30/, side[1] " x " side[2], line)
                sub(/113.4 85.0/, points(side[1]) " " points(side[2]), line)
                print line
            }
        }' "$ppd"
}

make_printing() { # FOLDER: sets CUPS_SERVER, VORLYN_TEST_PRINT_FOLDER and $printing_pid
    local user label=$1/label.ppd
    export PATH=$PATH:/usr/sbin # where not everybody looks for cupsd, lpadmin and cupsdisable
    user=$(id -un)
    [ "$user" != root ] || user="lp"
    mkdir -p "$1"/{etc/ppd,spool/tmp,cache,state,log,out}
    make_print_programs "$1"
    write_print_configuration "$1" "$user"
    if [ "$user" = lp ]; then
        chmod 755 "$1"
        chown -R lp:lp "$1"/{spool,cache,state,out}
        check_lp_reaches "$1"
    fi
    "$1/bin/cupsd" -f -c "$1/etc/cupsd.conf" -s "$1/etc/cups-files.conf" &
    printing_pid=$!
    export CUPS_SERVER=$1/socket VORLYN_TEST_PRINT_FOLDER=$1/out
    await print_server
    label_ppd "$(dirname "${BASH_SOURCE[0]}")/label.ppd" ${wine:+$strip_sizes} >"$label"
    sed 's/HWMargins: 0 0 0 0/HWMargins: 9 9 9 9/' "$label" >"$1/edge.ppd"
    add_queue LABEL-300 "$1" -P "$label"
    add_queue EDGE-BENCH "$1" -P "$1/edge.ppd"
    add_queue RAW-BENCH "$1" -m raw
}
