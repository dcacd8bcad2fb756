#!/usr/bin/env bash
# Runs a command with a sound server: a PulseAudio of its own whose only device lets out what it gets unheard, gone when
# the command ends. Exit status 77 where PulseAudio is not installed.
#   with-sound-server.sh COMMAND [ARGUMENT...]
set -euo pipefail

command -v pulseaudio >/dev/null || {
    echo "with-sound-server.sh: pulseaudio is missing"
    exit 77
}
scratch=$(mktemp -d)
server=
clean_up() {
    [[ -z $server ]] || { kill "$server" && wait "$server"; } 2>/dev/null || true
    rm -rf "$scratch"
}
trap clean_up EXIT

HOME=$scratch XDG_RUNTIME_DIR=$scratch pulseaudio -n -F /dev/null --daemonize=no --exit-idle-time=-1 --use-pid-file=no \
    --disable-shm=yes --load="module-null-sink sink_properties=device.description=default" \
    --load="module-native-protocol-unix auth-anonymous=1 socket=$scratch/socket" >"$scratch/log" 2>&1 &
server=$!
until [[ -S $scratch/socket ]]; do
    kill -0 "$server" 2>/dev/null || {
        cat "$scratch/log" >&2
        echo "with-sound-server.sh: PulseAudio did not start" >&2
        exit 1
    }
    sleep 0.05
done

PULSE_SERVER=unix:$scratch/socket QRT_SOUND_SERVER=1 "$@"
