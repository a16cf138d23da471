#!/usr/bin/env bash
# A private PulseAudio sound server with no hardware, for the audio tests and
# for headless machines:
#   scripts/pulse-null-sink.sh start DIR   start it with its sockets and state in DIR
#   scripts/pulse-null-sink.sh stop DIR    stop it (by its PID) and remove its files
# "start" prints the environment that points a program at it, as shell lines:
#   eval "$(scripts/pulse-null-sink.sh start /tmp/snd)"
#
# What is played goes into a 22050 Hz mono null sink; the default recording
# source is that sink's monitor, so a program hears exactly what it plays
# (sample for sample: nothing is resampled or changed in volume) and hears
# silence otherwise. Works as root.
set -euo pipefail

usage() { echo "usage: $0 start|stop DIR" >&2; exit 2; }
[ $# -eq 2 ] || usage
cmd=$1
dir=$2
case "$dir" in /*) ;; *) dir="$PWD/$dir" ;; esac

sink=lv_null
source=lv_loop_in

print_env() {
    echo "export PULSE_SERVER=unix:$dir/native"
    echo "export XDG_RUNTIME_DIR=$dir"
    echo "export PULSE_RUNTIME_PATH=$dir"
    echo "export PULSE_STATE_PATH=$dir/state"
    echo "export PULSE_COOKIE=$dir/cookie"
    echo "export GST_REGISTRY=$dir/gst-registry.bin"
}

stop_server() {
    if [ -f "$dir/pid" ]; then
        local pid
        pid=$(cat "$dir/pid")
        # A PID file left from before a reboot may name someone else's process.
        if [ "$(cat "/proc/$pid/comm" 2>/dev/null)" = pulseaudio ] && kill "$pid" 2>/dev/null; then
            # It has let its clients go and unloaded everything when it logs
            # this, but the process lingers for another two seconds or so.
            for _ in $(seq 100); do
                kill -0 "$pid" 2>/dev/null || break
                grep -q "Daemon terminated" "$dir/pulseaudio.log" 2>/dev/null && break
                sleep 0.02
            done
            kill -9 "$pid" 2>/dev/null || true
        fi
        rm -f "$dir/pid"
    fi
    rm -rf "$dir/native" "$dir/state" "$dir/cookie" "$dir/null-sink.pa" "$dir/gst-registry.bin"
}

case "$cmd" in
stop)
    stop_server
    exit 0
    ;;
start) ;;
*) usage ;;
esac

command -v pulseaudio >/dev/null || { echo "$0: pulseaudio is not installed" >&2; exit 1; }
# A Unix socket path is limited to 107 bytes.
if [ ${#dir} -gt 90 ]; then
    echo "$0: folder path too long for a socket: $dir" >&2
    exit 1
fi
stop_server
mkdir -p "$dir/state"
chmod 700 "$dir"

# Qt 6.4 lists no monitor sources and takes the first source as the default,
# so the monitor is offered as an ordinary source, loaded before any other.
# The null source looped into the sink keeps the sink running (an idle null
# sink is suspended and its monitor then delivers nothing). Suspending and
# resuming the sink drops the two seconds it renders ahead when it starts.
cat > "$dir/null-sink.pa" <<EOF
load-module module-native-protocol-unix auth-anonymous=1 socket=$dir/native
load-module module-null-sink sink_name=$sink rate=22050 channels=1 channel_map=mono format=s16le
load-module module-remap-source source_name=$source master=$sink.monitor rate=22050 channels=1 channel_map=mono format=s16le
load-module module-null-source source_name=lv_silence rate=22050 channels=1 channel_map=mono format=s16le
load-module module-loopback source=lv_silence sink=$sink latency_msec=20
set-default-sink $sink
set-default-source $source
suspend-sink $sink 1
suspend-sink $sink 0
EOF

export XDG_RUNTIME_DIR="$dir" PULSE_RUNTIME_PATH="$dir" PULSE_STATE_PATH="$dir/state"
export PULSE_COOKIE="$dir/cookie" GST_REGISTRY="$dir/gst-registry.bin"
# Its output goes to a log file: a test runner waits for every holder of its
# output pipes to go away, and this server outlives the script.
pulseaudio -n -F "$dir/null-sink.pa" --daemonize=no --exit-idle-time=-1 --use-pid-file=no \
    --disallow-exit --system=no --realtime=no --high-priority=no \
    --log-target=stderr --log-level=info </dev/null >"$dir/pulseaudio.log" 2>&1 &
pid=$!
echo "$pid" > "$dir/pid"

for _ in $(seq 250); do
    if ! kill -0 "$pid" 2>/dev/null; then
        echo "$0: pulseaudio failed to start:" >&2
        cat "$dir/pulseaudio.log" >&2
        rm -f "$dir/pid"
        exit 1
    fi
    if [ -S "$dir/native" ] && PULSE_SERVER="unix:$dir/native" pactl info >/dev/null 2>&1; then
        print_env
        exit 0
    fi
    sleep 0.02
done
echo "$0: pulseaudio did not answer within 5 s" >&2
stop_server
exit 1
