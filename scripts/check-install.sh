#!/usr/bin/env bash
# Installs lv_Analog into a temporary prefix and checks what an installed copy
# needs: exactly the expected files, programs that start, and the read-only
# files where the program looks for them (<prefix>/bin/../share/lv_Analog):
# the user guide and dummy.mp3; the desktop entry naming an installed program
# and an installed icon.
#
#   scripts/check-install.sh [--no-build] [BUILD_DIR]     (default: build)
#
# Without --no-build the build folder is configured if need be and built first.
set -euo pipefail
cd "$(dirname "$0")/.."

build_first=1
if [ "${1:-}" = "--no-build" ]; then
    build_first=0
    shift
fi
build=${1:-build}
if [ "$build_first" = 1 ]; then
    [ -f "$build/CMakeCache.txt" ] ||
        cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
    cmake --build "$build"
fi
[ -f "$build/CMakeCache.txt" ] || { echo "check-install: no build in $build" >&2; exit 2; }

prefix=$(mktemp -d "${TMPDIR:-/tmp}/lv_install.XXXXXX")
trap 'rm -rf "$prefix"' EXIT
if ! log=$(cmake --install "$build" --prefix "$prefix" 2>&1); then
    echo "$log" >&2
    echo "check-install: cmake --install failed" >&2
    exit 1
fi

failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}
pass() { echo "ok: $*"; }

guide="lv3 Prime User Guide V1.0.pdf"
share="$prefix/bin/../share/lv_Analog"   # as findResource looks beside bin/

# Exactly these files, nothing more (no libraries, headers or test programs).
# The man pages are made only where help2man is installed.
man_pages=()
[ -d "$build/man" ] && man_pages=(share/man/man1/{lv3sim,lvdtool,lv_Analog}.1.gz)
expected=$(printf '%s\n' \
    "bin/lv3sim" "bin/lvdtool" "bin/lv_Analog" \
    "share/applications/lv_Analog.desktop" \
    "share/icons/hicolor/scalable/apps/lv_Analog.svg" \
    "share/lv_Analog/$guide" "share/lv_Analog/dummy.mp3" \
    "share/metainfo/lv_Analog.metainfo.xml" "share/mime/packages/lv_Analog.xml" \
    "share/doc/lv-analog/copyright" "share/doc/lv-analog/changelog.Debian.gz" \
    "${man_pages[@]}" | sort)
installed=$(cd "$prefix" && find . -type f -o -type l | sed 's|^\./||' | sort)
if [ "$installed" = "$expected" ]; then
    pass "installed files are the expected ones"
else
    fail "installed files differ from the expected ones:"
    diff <(echo "$expected") <(echo "$installed") >&2 || true
fi

# The programs start. Under a sanitizer build, Qt's own allocations at exit are
# not this check's concern.
export QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0}
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
if out=$("$prefix/bin/lv_Analog" --version 2>/dev/null) && [ "$out" = "lv_Analog $version" ]; then
    pass "lv_Analog --version: $out"
else
    fail "lv_Analog --version gave '$out', expected 'lv_Analog $version'"
fi
for tool in lv3sim lvdtool; do
    if out=$("$prefix/bin/$tool" --help 2>&1) && grep -q "^Usage: $tool" <<<"$out"; then
        pass "$tool --help"
    else
        fail "$tool --help did not print its usage"
    fi
    if out=$("$prefix/bin/$tool" --version 2>&1) && [ "$out" = "$tool $version" ]; then
        pass "$tool --version: $out"
    else
        fail "$tool --version gave '$out', expected '$tool $version'"
    fi
done

# What the program finds through findResource.
if [ "$(head -c 5 "$share/$guide" 2>/dev/null)" = "%PDF-" ]; then
    pass "the user guide is a PDF in $share"
else
    fail "no PDF user guide at $share/$guide"
fi
if cmp -s "$share/dummy.mp3" data/dummy.mp3; then
    pass "dummy.mp3 in $share"
else
    fail "dummy.mp3 missing or different in $share"
fi

# The desktop entry starts an installed program and shows an installed icon.
desktop="$prefix/share/applications/lv_Analog.desktop"
exec_name=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$desktop" 2>/dev/null)
icon_name=$(sed -n 's/^Icon=//p' "$desktop" 2>/dev/null)
[ -n "$exec_name" ] && [ -x "$prefix/bin/$exec_name" ] && pass "desktop Exec=$exec_name" ||
    fail "the desktop entry's Exec '$exec_name' is not an installed program"
icon="$prefix/share/icons/hicolor/scalable/apps/$icon_name.svg"
[ -n "$icon_name" ] && grep -q '<svg' "$icon" 2>/dev/null && pass "desktop Icon=$icon_name" ||
    fail "the desktop entry's Icon '$icon_name' is not an installed SVG"
if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$desktop" && pass "desktop-file-validate" ||
        fail "desktop-file-validate"
fi

if [ "$failures" -ne 0 ]; then
    echo "check-install: $failures check(s) failed" >&2
    exit 1
fi
echo "check-install: all checks passed"
