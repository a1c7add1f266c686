# Sourced, after network.sh for await. A sound server of its own that plays into nothing. Its four
# sinks are named after their sample formats, and the first is the default:
# "pactl set-default-sink float32le" chooses another, "parec -d s16le.monitor" hears it.
# Without norewinds a null sink takes a second of sound at once and then nothing for as long.

sound_server() { timeout 5 pactl set-default-sink s16le; }
null_sink() { echo "module-null-sink sink_name=$1 format=$1 rate=48000 channels=$2 norewinds=1"; }

make_sound() { # FOLDER: sets PULSE_SERVER and $sound_pid
    export PULSE_SERVER=unix:$1/sound.socket PULSE_COOKIE=$1/sound.cookie
    # The folder is its home too, so that it neither reads nor leaves files of the user's.
    HOME=$1 XDG_RUNTIME_DIR=$1 XDG_CONFIG_HOME=$1 pulseaudio -n --daemonize=no \
        --use-pid-file=no --exit-idle-time=-1 --disable-shm=yes \
        -L "$(null_sink s16le 2)" -L "$(null_sink s32le 2)" -L "$(null_sink float32le 2)" \
        -L "$(null_sink u8 1)" \
        -L "module-native-protocol-unix auth-anonymous=1 socket=$1/sound.socket" >/dev/null 2>&1 &
    sound_pid=$!
    await sound_server
}
