#!/usr/bin/env bash
# Runs a test program that checks for leaks at its end, and once more when the leak checker itself breaks down.
#   leak-checked.sh COMMAND [ARGUMENT...]
# LeakSanitizer stops all threads and looks through their memory from outside; rarely, on a busy machine, it trips over a
# thread that is just ending ("Tracer caught signal 11") and fails a program whose tests all passed. Only that is tried
# again; a leak, a failed test or a crash is final.
set -uo pipefail

output=$(mktemp)
trap 'rm -f "$output"' EXIT
for attempt in 1 2 3; do
    "$@" 2>&1 | tee "$output"
    status=${PIPESTATUS[0]}
    [[ $status -ne 0 ]] || exit 0
    grep -q 'LeakSanitizer has encountered a fatal error' "$output" || break
    grep -qE '^\[  FAILED  \]|ERROR: (Address|Leak)Sanitizer|runtime error:' "$output" && break
    echo "leak-checked.sh: the leak checker broke down (attempt $attempt)" >&2
done
exit "$status"
