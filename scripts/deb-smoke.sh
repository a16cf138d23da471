#!/usr/bin/env bash
# What a user does first with an installed lv_Analog, run against the programs
# in BIN_DIR: the versions and usage, a recording made and read back, and the
# window on the virtual meter with its screenshot. The window needs an X
# display in DISPLAY, or QT_QPA_PLATFORM=offscreen.
#
#   scripts/deb-smoke.sh BIN_DIR SCRATCH_DIR VERSION
#
# Run by scripts/check-deb.sh inside a bare Debian root, and on a folder the
# package was unpacked into with dpkg -x. Needs nothing but bash and coreutils.
set -uo pipefail

bin=$1
scratch=$2
version=$3
mkdir -p "$scratch/home"
# A home of its own: the settings must land in it, and nothing beside the programs.
export HOME="$scratch/home"
unset XDG_CONFIG_HOME
touch "$scratch/.start"

failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}
pass() { echo "ok: $*"; }

# Exactly "NAME VERSION" on standard output.
for program in lv_Analog lvdtool lv3sim; do
    out=$("$bin/$program" --version 2>"$scratch/$program.err")
    if [ "$out" = "$program $version" ]; then
        pass "$program --version: $out"
    else
        fail "$program --version gave '$out', expected '$program $version'"
        cat "$scratch/$program.err" >&2
    fi
done
if "$bin/lv3sim" --help | grep -q '^Usage: lv3sim'; then
    pass "lv3sim --help"
else
    fail "lv3sim --help printed no usage"
fi

rec="$scratch/smoke.lvd"
if "$bin/lvdtool" synth "$rec" --seconds 3 --start '2026-01-02 03:04:05' >/dev/null &&
    info=$("$bin/lvdtool" info "$rec") &&
    grep -qx 'records: 150' <<<"$info" && grep -qx 'verdict: valid' <<<"$info"; then
    pass "lvdtool synth, then info: $(tr '\n' ' ' <<<"$info")"
else
    fail "lvdtool synth then info: '${info:-}'"
fi

# The window on the virtual meter. The meter's log shows whether the program
# opened the port and started the stream ("U"), which the splash and Demo Mode
# never do.
link="$scratch/meter"
"$bin/lv3sim" --link "$link" --log "$scratch/meter.log" >"$scratch/meter.out" 2>&1 &
sim=$!
for _ in $(seq 100); do
    grep -q READY "$scratch/meter.out" 2>/dev/null && break
    sleep 0.05
done
shot="$scratch/live.png"
"$bin/lv_Analog" --port "$link" --screenshot "$shot" --exit-after 5 \
    >"$scratch/window.out" 2>&1
status=$?
kill "$sim" 2>/dev/null
wait "$sim" 2>/dev/null
if [ "$status" -eq 0 ]; then
    pass "lv_Analog ran against lv3sim and closed by --exit-after"
else
    fail "lv_Analog exited with $status:"
    cat "$scratch/window.out" >&2
fi
if [ "$(head -c 8 "$shot" 2>/dev/null | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a ]; then
    pass "screenshot $shot ($(wc -c <"$shot") bytes)"
else
    fail "no PNG screenshot at $shot"
fi
if grep -Eq '^[0-9.]+ U$' "$scratch/meter.log" 2>/dev/null; then
    pass "the live stream ran (the meter was sent \"U\")"
else
    fail "the program never started the meter's stream: the dial was not live"
fi

if [ -d "$HOME/.config/lv_Analog" ]; then
    pass "the data folder is ~/.config/lv_Analog"
else
    fail "no ~/.config/lv_Analog after a run"
fi
written=$(find "$bin/.." -newer "$scratch/.start" \( -type f -o -type d \) -print 2>/dev/null)
if [ -z "$written" ]; then
    pass "nothing written under $(cd "$bin/.." && pwd)"
else
    fail "files written beside the installed programs: $written"
fi

if [ "$failures" -ne 0 ]; then
    echo "deb-smoke: $failures check(s) failed" >&2
    exit 1
fi
echo "deb-smoke: all checks passed"
