# Sourced. Installs the distribution's packages that are missing, as root or through sudo.

build_packages="g++ cmake ninja-build ccache qtbase5-dev"
run_packages="iproute2 util-linux libgl1-mesa-dri fonts-dejavu-core fonts-wqy-microhei"
screen_packages="xvfb openbox x11-utils xdotool imagemagick"

install_packages() { # NAME...
    local missing=() name
    for name in "$@"; do
        if ! dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q 'ok installed'; then
            missing+=("$name")
        fi
    done
    [ ${#missing[@]} -eq 0 ] && return
    local become=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "Missing packages: ${missing[*]}" >&2
            echo "Install them as root, or install sudo, and start again." >&2
            exit 1
        }
        become=(sudo)
    fi
    echo "Installing ${missing[*]}"
    "${become[@]}" apt-get -qq update
    "${become[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300 \
        install -y --no-install-recommends "${missing[@]}" >/dev/null
}
