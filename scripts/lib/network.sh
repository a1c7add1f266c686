# Sourced. A private network of two sides: this process's network namespace is the workstation, a
# second namespace holds the cameras. Works for root and, through a user namespace, for everybody.
#
#   workstation          cameras
#   veth-a 10.77.0.1/24  cam-a 10.77.0.2/24
#   veth-b 10.88.0.1/24  cam-b 10.88.0.2/24
#
# MACs are fixed. $camera is a process in the cameras' namespace; end it, and the namespace is gone.

# await COMMAND...: until it succeeds, for some $patience seconds at the most.
patience=10
await() {
    local end=$((SECONDS + patience))
    while [ $SECONDS -le $end ]; do
        if "$@" >/dev/null 2>&1; then return; fi
        sleep 0.02
    done
    echo "gave up waiting for: $*" >&2
    exit 3
}

# enter_network SCRIPT ARGUMENT...: runs the script again in a network namespace of its own, once. Its
# mounts are its own too, for tests with folders that can't be written.
enter_network() {
    if [ -z "${VORLYN_IN_NETWORK:-}" ]; then
        export VORLYN_IN_NETWORK=1
        exec unshare -rnm "$@"
    fi
}

in_cameras() { nsenter -t "$camera" -n "$@"; }
in_own_namespace() { [ "$(readlink "/proc/$camera/ns/net")" != "$(readlink /proc/$$/ns/net)" ]; }
carrier() { # letter
    ip -br link show "veth-$1" | grep -qw UP && in_cameras ip -br link show "cam-$1" | grep -qw UP
}

add_link() { # letter subnet
    ip link add "veth-$1" address "02:00:00:00:00:$1$1" type veth \
        peer name "cam-$1" address "02:00:00:00:01:$1$1" netns "$camera"
    ip addr add "10.$2.0.1/24" dev "veth-$1"
    ip link set "veth-$1" up
    in_cameras ip addr add "10.$2.0.2/24" dev "cam-$1"
    in_cameras ip link set "cam-$1" up
}

# start_cameras FLEET OUTPUT OPTION...: sets $fleet. The fleet reads its orders from standard input.
start_cameras() {
    : >"$2"
    # Not through in_cameras: the shell that a function gets would be ended in its place.
    nsenter -t "$camera" -n "$1" --interface cam-a "${@:3}" >"$2" <&0 &
    fleet=$!
    await grep -q READY "$2"
}

make_network() { # sets $camera
    ip link set lo up
    unshare -n sleep infinity &
    camera=$!
    await in_own_namespace
    in_cameras ip link set lo up
    add_link a 77
    add_link b 88
    await carrier a
    await carrier b
}
