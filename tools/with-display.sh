#!/bin/bash
# with-display.sh COMMAND...: runs a command with a virtual display of its own, so that it needs no screen and
# shows nothing on one.
set -euo pipefail

numberFile=$(mktemp)
Xvfb -displayfd 3 -screen 0 1600x1200x24 -nolisten tcp 3>"$numberFile" >/dev/null 2>&1 &
server=$!
trap 'kill "$server" 2>/dev/null || true; rm -f "$numberFile"' EXIT

for _ in $(seq 100); do
    [ -s "$numberFile" ] && break
    sleep 0.1
done
if [ ! -s "$numberFile" ]; then
    echo "with-display: the virtual display did not start" >&2
    exit 1
fi
DISPLAY=":$(tr -d '\n' <"$numberFile")" "$@"
