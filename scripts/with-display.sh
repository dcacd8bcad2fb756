#!/usr/bin/env bash
# Runs a command with a display: an Xvfb of its own, gone when the command ends. OpenGL runs in software there.
#   scripts/with-display.sh COMMAND [ARGUMENT...]
set -euo pipefail

export QT_QPA_PLATFORM=xcb
fifo=$(mktemp -u)
mkfifo "$fifo"
# The server itself picks a free display number and writes it when it is ready to serve.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$fifo" >/dev/null 2>&1 &
server=$!
trap 'kill "$server" 2>/dev/null; wait "$server" 2>/dev/null || true; rm -f "$fifo"' EXIT
read -r number <"$fifo" || {
    echo "with-display.sh: Xvfb did not start" >&2
    exit 1
}
export DISPLAY=":$number"
unset WAYLAND_DISPLAY XAUTHORITY
"$@"
