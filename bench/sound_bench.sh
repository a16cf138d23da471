#!/usr/bin/env bash
# The sound benchmark: memory, first sound and sync of long sessions.
#   bench/sound_bench.sh [BIN_DIR]        (or: make bench-sound)
# Makes its own files in a temporary folder with lvdtool synth, sox and lame:
# a 3-hour recording with its .wav and with a 128 kbit/s .mp3, and 20-second
# files of every kind the program meets (WAV 8/16/24-bit and float, MP3 CBR,
# VBR with and without a Xing/Info header). Each is played through the
# program's own sound track on a private null sink (scripts/pulse-null-sink.sh),
# the long ones also by the whole program (lv_Analog --play, offscreen, against
# lv3sim); then a recording runs for 5 minutes. Prints one "name value" a line.
# SOUND_BENCH_SECONDS (length of the long files, default 10800) and
# SOUND_BENCH_RECORD_SECONDS (default 300) shorten a trial run.
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
bin=$(cd "${1:-$here/build/bin}" && pwd)
long=${SOUND_BENCH_SECONDS:-10800}
rec=${SOUND_BENCH_RECORD_SECONDS:-300}
for tool in sox lame "$bin/lvdtool" "$bin/sound_probe" "$bin/lv_Analog" "$bin/lv3sim"; do
    command -v "$tool" >/dev/null || { echo "$0: $tool is missing (make build; scripts/install-deps.sh)" >&2; exit 1; }
done

work=$(mktemp -d /tmp/lv_sound_bench.XXXXXX)
pulse=$work/pulse
cleanup() {
    "$here/scripts/pulse-null-sink.sh" stop "$pulse" >/dev/null 2>&1 || true
    rm -rf "$work"
}
trap cleanup EXIT
eval "$("$here/scripts/pulse-null-sink.sh" start "$pulse")"
export TMPDIR=$work

say() { printf '%s\n' "$*"; }
probe() {  # name, then sound_probe's arguments; its lines get the name in front
    local name=$1; shift
    "$bin/sound_probe" "$@" | sed "s/^/$name./"
}
program() {  # name, .lvd: the whole program plays it under lv3sim; its RSS after 15 s
    local name=$1 lvd=$2 sim app
    mkdir -p "$work/data"
    "$bin/lv3sim" --link "$work/meter" >"$work/sim.txt" 2>&1 &
    sim=$!
    for _ in $(seq 50); do grep -q READY "$work/sim.txt" && break; sleep 0.1; done
    QT_QPA_PLATFORM=offscreen "$bin/lv_Analog" --data-dir "$work/data" --port "$work/meter" \
        --play "$lvd" --exit-after 20 >/dev/null 2>&1 &
    app=$!
    sleep 15
    say "$name.program_rss_playing_mb $(awk '/VmRSS/ {printf "%.1f", $2 / 1024}' /proc/$app/status)"
    wait "$app" || true
    kill "$sim" 2>/dev/null || true
    wait "$sim" 2>/dev/null || true
}
info() {  # the sound lines of lvdtool info
    "$bin/lvdtool" info "$1" | grep '^sound' | sed "s/^/$2./"
}

say "# making a $long s recording with its sound (takes a few minutes)"
"$bin/lvdtool" synth "$work/long.lvd" --seconds "$long" >/dev/null
sox -R -n -r 22050 -c 1 -b 16 "$work/long.wav" synth "$long" pinknoise vol 0.3
# (sox cannot fix up the header of a wave it pipes; lame reads on to the end)
sox -R -n -r 44100 -c 2 -b 16 -t wav - synth "$long" pinknoise vol 0.3 2>/dev/null |
    lame --quiet -b 128 - "$work/long.mp3"
jump=$(( long > 7200 ? 3600000 : long * 500 ))

say "# playing the long recording"
probe long_wav play "$work/long.wav" --lvd "$work/long.lvd" --seconds 10 --jump-ms $jump
ln -s long.lvd "$work/long_mp3.lvd"
ln -s long.mp3 "$work/long_mp3.mp3"
probe long_mp3 play "$work/long_mp3.mp3" --lvd "$work/long.lvd" --seconds 10 --jump-ms $jump
info "$work/long.lvd" long_wav
info "$work/long_mp3.lvd" long_mp3
program long_wav "$work/long.lvd"
program long_mp3 "$work/long_mp3.lvd"

say "# every kind of file, 20 s each"
"$bin/lvdtool" synth "$work/short.lvd" --seconds 20 >/dev/null
kinds=(
    "wav_8bit_11025|-r 11025 -c 1 -b 8 -e unsigned|"
    "wav_16bit_22050_mono|-r 22050 -c 1 -b 16|"
    "wav_16bit_44100_stereo|-r 44100 -c 2 -b 16|"
    "wav_24bit_48000_stereo|-r 48000 -c 2 -b 24|"
    "wav_float_44100|-r 44100 -c 1 -b 32 -e floating-point|"
    "wav_16bit_96000|-r 96000 -c 1 -b 16|"
    "mp3_cbr_128|-r 44100 -c 2 -b 16|-b 128"
    "mp3_vbr_tagged|-r 44100 -c 2 -b 16|-V 4"
    "mp3_vbr_no_header|-r 44100 -c 2 -b 16|-V 4 -t"
    "mp3_64k_mono|-r 22050 -c 1 -b 16|-b 64 -m m"
)
for row in "${kinds[@]}"; do
    IFS='|' read -r name format lame_opts <<<"$row"
    rm -f "$work/short.wav" "$work/short.mp3"
    if [ -z "$lame_opts" ]; then
        # shellcheck disable=SC2086
        sox -R -n $format "$work/short.wav" synth 20 pinknoise vol 0.3
        sound=$work/short.wav
    else
        # shellcheck disable=SC2086
        sox -R -n $format "$work/source.wav" synth 20 pinknoise vol 0.3
        # shellcheck disable=SC2086
        lame --quiet $lame_opts "$work/source.wav" "$work/short.mp3"
        sound=$work/short.mp3
    fi
    probe "$name" play "$sound" --seconds 10 --jump-ms 10000 |
        grep -E 'drift|first_sound|length_ms|cpu'
    info "$work/short.lvd" "$name" | grep -E 'sound_ms|minus'
done

say "# recording for $rec s"
probe record record --seconds "$rec"
