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

# The server itself picks a free display number and writes it when it is ready to serve.
mkfifo "$scratch/display"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$scratch/display" >/dev/null 2>&1 &
server=$!
read -r number <"$scratch/display" || {
    echo "with-display.sh: Xvfb did not start" >&2
    exit 1
}

export DISPLAY=":$number"
export QT_QPA_PLATFORM=xcb
export XDG_RUNTIME_DIR=${XDG_RUNTIME_DIR:-$scratch}
unset WAYLAND_DISPLAY XAUTHORITY
"$@"
