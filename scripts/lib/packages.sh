# Sourced. Installs the distribution's packages that are missing, as root or through sudo.

build_packages="g++ cmake ninja-build ccache pkg-config qtbase5-dev qtmultimedia5-dev libavformat-dev \
    libavcodec-dev libavutil-dev libswresample-dev libswscale-dev libgstrtspserver-1.0-dev \
    libgstreamer-plugins-base1.0-dev libqrencode-dev"
# What the programs and the simulated cameras load as they run.
program_packages="libgl1-mesa-dri fonts-dejavu-core fonts-wqy-microhei fonts-liberation \
    libqt5multimedia5-plugins qttranslations5-l10n"
camera_packages="gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad \
    gstreamer1.0-plugins-ugly gstreamer1.0-libav"
run_packages="iproute2 util-linux $program_packages $camera_packages"
screen_packages="xvfb openbox x11-utils xdotool imagemagick"
sound_packages="pulseaudio pulseaudio-utils"
printing_packages="cups cups-client cups-filters poppler-utils zbar-tools"
wine_packages="wine wine64 libxcomposite1 python3"

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
