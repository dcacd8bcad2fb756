#!/usr/bin/env bash
# Runs a command with a display: an Xvfb of its own, gone when the command ends. OpenGL runs in software there.
#   scripts/with-display.sh COMMAND [ARGUMENT...]
set -euo pipefail

scratch=$(mktemp -d)
server=
cleanUp() {
    [[ -z $server ]] || { kill "$server" && wait "$server"; } 2>/dev/null || true
    rm -rf "$scratch"
}
trap cleanUp EXIT

# A display number drawn at random: servers that start at the same time and look for the first free one take each other's
# sockets away. The server writes the number when it is ready to serve.
mkfifo "$scratch/ready"
number=
for _ in 1 2 3 4 5; do
    candidate=$((RANDOM + 100))
    Xvfb ":$candidate" -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$scratch/ready" >"$scratch/log" 2>&1 &
    server=$!
    read -r number <"$scratch/ready" && break
    wait "$server" 2>/dev/null || true
    server=
done
[[ -n $number ]] || {
    cat "$scratch/log" >&2
    echo "with-display.sh: Xvfb did not start" >&2
    exit 1
}

export DISPLAY=":$number"
export QT_QPA_PLATFORM=xcb
export XDG_RUNTIME_DIR=${XDG_RUNTIME_DIR:-$scratch}
unset WAYLAND_DISPLAY XAUTHORITY
"$@"
