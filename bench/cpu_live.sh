#!/usr/bin/env bash
# The program's whole-process CPU (all threads, as a share of one core) in a
# real window under Xvfb, against the virtual meter: live and playing back,
# chart shown and hidden. Steady state: the first seconds after start-up are
# left out.
#   bench/cpu_live.sh [BIN_DIR]       (default build/bin)
# Seconds measured per case: LV_CPU_SECONDS, else 8 when CI is set, else 30.
set -euo pipefail

bin=$(cd "${1:-build/bin}" && pwd)
if [ -n "${CI:-}" ]; then secs=8 warm=3; else secs=30 warm=5; fi
secs=${LV_CPU_SECONDS:-$secs}
warm=${LV_CPU_WARMUP:-$warm}

for tool in Xvfb; do
    command -v "$tool" > /dev/null || { echo "$0: $tool is missing (scripts/install-deps.sh build)" >&2; exit 2; }
done

tmp=$(mktemp -d)
pids=()
xvfb=""
stop() {
    for p in "${pids[@]}"; do kill "$p" 2> /dev/null || true; done
    for p in "${pids[@]}"; do wait "$p" 2> /dev/null || true; done
    pids=()
}
trap 'stop; [ -n "$xvfb" ] && kill "$xvfb" 2> /dev/null; wait 2> /dev/null; rm -rf "$tmp"' EXIT

# A private X server with a full-HD screen; it names its display on fd 3.
Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp 3> "$tmp/display" 2> "$tmp/xvfb.log" &
xvfb=$!
for _ in $(seq 100); do [ -s "$tmp/display" ] && break; sleep 0.05; done
[ -s "$tmp/display" ] || { echo "$0: Xvfb did not start" >&2; cat "$tmp/xvfb.log" >&2; exit 1; }
export DISPLAY=":$(cat "$tmp/display")" QT_QPA_PLATFORM=xcb
unset PULSE_SERVER

"$bin/lvdtool" synth "$tmp/play.lvd" --seconds $((secs + warm + 30)) > /dev/null

ticks=$(getconf CLK_TCK)
# utime + stime of the whole process, in clock ticks.
cpu_ticks() { awk '{ print $14 + $15 }' "/proc/$1/stat"; }

run_case() {  # mode (live|playback), chart (True|False)
    local mode=$1 chart=$2 data="$tmp/data-$1-$2" link="$tmp/meter-$1-$2"
    mkdir -p "$data"
    printf '[Format]\r\nGraphVisible=%s\r\n[Recording]\r\nAudioEnable=False\r\nPlayLoopEnable=True\r\n' \
        "$chart" > "$data/lv_Analog.ini"
    "$bin/lv3sim" --link "$link" > "$tmp/sim.out" 2>&1 &
    pids+=($!)
    for _ in $(seq 100); do grep -q READY "$tmp/sim.out" 2> /dev/null && break; sleep 0.05; done
    local args=(--data-dir "$data" --port "$link")
    [ "$mode" = playback ] && args+=(--play "$tmp/play.lvd")
    "$bin/lv_Analog" "${args[@]}" > "$tmp/app.log" 2>&1 &
    local app=$!
    pids+=("$app")
    sleep "$warm"
    local t0 s0 t1 s1
    t0=$(cpu_ticks "$app")
    s0=$(date +%s.%N)
    sleep "$secs"
    t1=$(cpu_ticks "$app")
    s1=$(date +%s.%N)
    stop
    awk -v m="$mode" -v c="$chart" -v d=$((t1 - t0)) -v a="$s0" -v b="$s1" -v hz="$ticks" \
        'BEGIN { printf "%-9s %-12s %6.2f %%\n", m, (c == "True" ? "chart shown" : "chart hidden"), 100 * d / hz / (b - a) }'
}

echo "CPU of one core, ${secs} s per case after ${warm} s, screen 1920x1080 (Xvfb)"
for mode in live playback; do
    for chart in True False; do run_case "$mode" "$chart"; done
done
