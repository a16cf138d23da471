#!/usr/bin/env bash
# Applies each single-line mutation listed in tests/MUTATIONS.md, rebuilds,
# runs tests, and says whether the suite caught it. The source is restored
# after each one, also when interrupted.
#
#   scripts/mutants.sh [--full] [--build DIR] [M1 M7 ...]
#
# Without --full only the tests named on the mutation's "caught by" line run
# (fast: a minute for the list); --full runs the whole suite per mutation and
# prints every failing test, which is how the "caught by" lines were made.
set -uo pipefail
cd "$(dirname "$0")/.."
build=build full=0 only=()
while (($#)); do
    case $1 in
        --full) full=1 ;;
        --build) build=$2; shift ;;
        *) only+=("$1") ;;
    esac
    shift
done
list=tests/MUTATIONS.md
[[ -d $build ]] || { echo "no build folder $build: configure and build first" >&2; exit 2; }

saved=""
restore() { [[ -n $saved ]] && cp "$saved.orig" "$saved" && rm -f "$saved.orig"; saved=""; }
trap 'restore; exit 130' INT TERM

# One mutation a block: "### Mn ...", then indented "file:", "from:", "to:", "caught by:".
mapfile -t ids < <(grep -oE '^### M[0-9]+' "$list" | cut -c5-)
field() { awk -v id="$1" -v key="$2" '
    /^### M[0-9]+/ { cur = $2 }
    cur == id && index($0, "    " key ": ") == 1 { print substr($0, length(key) + 7); exit }' "$list"; }

missed=0 caught=0
for id in "${ids[@]}"; do
    if ((${#only[@]})) && [[ ! " ${only[*]} " == *" $id "* ]]; then continue; fi
    file=$(field "$id" file) from=$(field "$id" from) to=$(field "$id" to) by=$(field "$id" "caught by")
    cp "$file" "$file.orig"; saved=$file
    if ! FROM=$from TO=$to python3 - "$file" <<'PY'
import os, sys
path = sys.argv[1]
text = open(path).read()
n = text.count(os.environ["FROM"])
if n != 1:
    sys.exit(f"{path}: the line to mutate occurs {n} times")
open(path, "w").write(text.replace(os.environ["FROM"], os.environ["TO"]))
PY
    then restore; echo "$id: NOT APPLIED"; missed=$((missed + 1)); continue; fi
    if ! cmake --build "$build" >"$build/mutant-build.log" 2>&1; then
        restore; echo "$id: caught by the compiler"; caught=$((caught + 1)); continue
    fi
    rm -f "$build/Testing/Temporary/LastTestsFailed.log"
    if ((full)); then
        ctest --test-dir "$build" -j2 --timeout 60 >/dev/null 2>&1
    else
        regex=$(echo "$by" | tr -d ' ' | tr ',' '\n' | sed 's/[.]/[.]/g; s/^/^/; s/$/$/' | paste -sd'|')
        ctest --test-dir "$build" -j2 --timeout 60 -R "$regex" >/dev/null 2>&1
    fi
    failed=$(cut -d: -f2 "$build/Testing/Temporary/LastTestsFailed.log" 2>/dev/null | paste -sd, | sed 's/,/, /g')
    restore
    if [[ -n $failed ]]; then
        echo "$id: caught by $failed"; caught=$((caught + 1))
    else
        echo "$id: MISSED"; missed=$((missed + 1))
    fi
done
cmake --build "$build" >/dev/null 2>&1  # back to the unmutated binaries
echo "caught $caught, missed $missed"
((missed == 0))
