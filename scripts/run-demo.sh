#!/usr/bin/env bash
# Starts lv_Analog. With no meter plugged in (no /dev/ttyUSB* or /dev/ttyACM*)
# the virtual meter is started on a pseudo-terminal and the program is pointed at it.
set -euo pipefail
bin=${1:-build/bin}
shift || true

shopt -s nullglob
real=(/dev/ttyUSB* /dev/ttyACM*)
if [ ${#real[@]} -gt 0 ]; then
    exec "$bin/lv_Analog" "$@"
fi

link="${XDG_RUNTIME_DIR:-/tmp}/lv3sim-$$"
"$bin/lv3sim" --link "$link" > "$link.out" &
sim=$!
trap 'kill $sim 2>/dev/null; wait $sim 2>/dev/null; rm -f "$link.out"' EXIT
for _ in $(seq 100); do
    grep -q READY "$link.out" 2>/dev/null && break
    sleep 0.05
done
echo "No meter attached: using the virtual meter on $link"
"$bin/lv_Analog" --port "$link" "$@"
