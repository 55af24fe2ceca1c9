#!/bin/bash
# with-display.sh [--if-possible] COMMAND...: runs a command with a virtual display of its own, so that it needs no
# screen and shows nothing on one. With --if-possible, a machine without Xvfb runs the command without any display.
# SORDELIN_SCREEN is the size, 1600x1200 by default.
set -euo pipefail

if [ "${1:-}" = "--if-possible" ]; then
    shift
    if ! command -v Xvfb >/dev/null; then
        unset DISPLAY
        exec "$@"
    fi
fi

# Never display 0: to that one programs fall back that have none, and what is to run without a display would not.
numberFile=$(mktemp)
server=
trap '[ -z "$server" ] || kill "$server" 2>/dev/null || true; rm -f "$numberFile"' EXIT
for _ in $(seq 20); do
    Xvfb ":$((100 + RANDOM % 20000))" -displayfd 3 -screen 0 "${SORDELIN_SCREEN:-1600x1200}x24" -nolisten tcp \
        -noreset 3>"$numberFile" >/dev/null 2>&1 &
    server=$!
    for _ in $(seq 100); do
        [ -s "$numberFile" ] && break 2
        kill -0 "$server" 2>/dev/null || break # the number is taken
        sleep 0.1
    done
done
if [ ! -s "$numberFile" ]; then
    echo "with-display: the virtual display did not start" >&2
    exit 1
fi
DISPLAY=":$(tr -d '\n' <"$numberFile")" "$@"
