#!/usr/bin/env bash
# Checks the Debian package the way a user meets it.
#
#   scripts/check-deb.sh --extracted [DEB]   quick (seconds; CI): unpacks the package
#       with dpkg -x into a temporary folder, validates its desktop entry, AppStream
#       metadata, file type and man pages, and runs the programs from that folder
#       (the window offscreen).
#   scripts/check-deb.sh [DEB]               the real test (minutes; root, network):
#       a bare Debian 12 root (debootstrap --variant=minbase bookworm), the package
#       installed there by apt-get with what it depends on and nothing else, then
#       the programs run inside it, the window under Xvfb against the virtual meter.
#
# DEB defaults to the newest build/lv-analog_*_amd64.deb. The bare root is made
# under $TMPDIR (default /tmp) and removed at the end; LV_DEBIAN_MIRROR names
# another mirror. Both modes print the package's size and dependencies; the
# bare-root one also how long the install took and how many packages it pulled.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

mode=bare
if [ "${1:-}" = "--extracted" ]; then
    mode=extracted
    shift
fi
deb=${1:-$(ls -t "$here"/../build/lv-analog_*_amd64.deb 2>/dev/null | head -n 1)}
[ -f "$deb" ] || { echo "check-deb: no package (make package builds it)" >&2; exit 2; }
deb=$(cd "$(dirname "$deb")" && pwd)/$(basename "$deb")
full_version=$(dpkg-deb -f "$deb" Version)
version=${full_version%-*}
depends=$(dpkg-deb -f "$deb" Depends)

echo "package: $(basename "$deb"), $(( $(stat -c %s "$deb") / 1024 )) KiB," \
     "$(( $(dpkg-deb -f "$deb" Installed-Size) )) KiB installed"
echo "depends ($(tr ',' '\n' <<<"$depends" | grep -c .)): $depends"
echo "recommends: $(dpkg-deb -f "$deb" Recommends)"

failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}
pass() { echo "ok: $*"; }

if [ "$mode" = extracted ]; then
    work=$(mktemp -d "${TMPDIR:-/tmp}/lv_deb.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    dpkg -x "$deb" "$work/root"
    usr="$work/root/usr"

    desktop-file-validate "$usr/share/applications/lv_Analog.desktop" &&
        pass "desktop-file-validate" || fail "desktop-file-validate"
    appstreamcli validate --no-net "$usr"/share/metainfo/*.metainfo.xml >"$work/as.out" 2>&1 &&
        pass "appstreamcli validate --no-net" || { cat "$work/as.out" >&2; fail "appstreamcli"; }
    # The file type as a desktop builds it from the installed definition.
    mkdir -p "$work/mime/packages"
    cp "$usr/share/mime/packages/lv_Analog.xml" "$work/mime/packages/"
    if update-mime-database "$work/mime" >/dev/null 2>&1 &&
        grep -qx 'application/x-lv-recording:\*\.lvd' <(cut -d: -f2- "$work/mime/globs2"); then
        pass "*.lvd is application/x-lv-recording"
    else
        fail "the shared-mime-info file does not map *.lvd to application/x-lv-recording"
    fi
    for program in lv_Analog lvdtool lv3sim; do
        page="$usr/share/man/man1/$program.1.gz"
        if zcat "$page" 2>/dev/null | grep -q "^\.TH \"\?${program^^}"; then
            pass "man page $program.1"
        else
            fail "no man page for $program"
        fi
    done
    for f in copyright changelog.Debian.gz; do
        [ -s "$usr/share/doc/lv-analog/$f" ] && pass "$f" || fail "no $f"
    done

    QT_QPA_PLATFORM=offscreen "$here/deb-smoke.sh" "$usr/bin" "$work/smoke" "$version" ||
        failures=$((failures + 1))
else
    [ "$(id -u)" -eq 0 ] || { echo "check-deb: the bare root needs root (debootstrap, chroot)" >&2; exit 2; }
    mirror=${LV_DEBIAN_MIRROR:-http://deb.debian.org/debian}
    root=$(mktemp -d "${TMPDIR:-/tmp}/lv_bare.XXXXXX")
    xvfb=""
    mounts=()
    cleanup() {
        [ -n "$xvfb" ] && kill "$xvfb" 2>/dev/null
        local i
        for ((i = ${#mounts[@]} - 1; i >= 0; i--)); do umount "${mounts[i]}" 2>/dev/null || true; done
        # Never delete through a mount that is still there: it would reach the host's /dev.
        for m in "${mounts[@]}"; do
            if mountpoint -q "$m"; then
                echo "check-deb: $m is still mounted; left $root in place" >&2
                return
            fi
        done
        rm -rf --one-file-system "$root"
    }
    trap cleanup EXIT
    bind() {
        mkdir -p "$root$2"
        mount "${@:3}" "$1" "$root$2"
        mounts+=("$root$2")
    }

    echo "== debootstrap --variant=minbase bookworm into $root"
    t0=$SECONDS
    debootstrap --variant=minbase bookworm "$root" "$mirror" >"$root.log" 2>&1 ||
        { tail -20 "$root.log" >&2; rm -f "$root.log"; exit 1; }
    rm -f "$root.log"
    echo "bare root made in $((SECONDS - t0)) s, $(chroot "$root" dpkg-query -W | wc -l) packages"
    # As a Debian 12 system is set up: with its updates and security archive.
    cat >"$root/etc/apt/sources.list" <<EOF
deb $mirror bookworm main
deb $mirror bookworm-updates main
deb http://deb.debian.org/debian-security bookworm-security main
EOF
    cp /etc/resolv.conf "$root/etc/resolv.conf"
    bind proc /proc -t proc
    bind /dev /dev --bind
    bind /dev/pts /dev/pts --bind

    in_root() {
        chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
            LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
    }
    in_root apt-get update -q >/dev/null
    before=$(in_root dpkg-query -W | wc -l)
    cp "$deb" "$root/tmp/"
    echo "== apt-get install ./$(basename "$deb")"
    t0=$(date +%s%N)
    if in_root apt-get install -y -q --no-install-recommends "/tmp/$(basename "$deb")" \
        >"$root/tmp/install.log" 2>&1; then
        ms=$((($(date +%s%N) - t0) / 1000000))
        seconds=$((ms / 1000)).$(printf '%03d' $((ms % 1000)))
        after=$(in_root dpkg-query -W | wc -l)
        pass "installed in $seconds s, pulling $((after - before - 1)) packages besides lv-analog"
        grep -E '^(Need to get|After this operation)' "$root/tmp/install.log" || true
    else
        tail -30 "$root/tmp/install.log" >&2
        fail "apt-get install of the package"
        exit 1
    fi

    # The X server runs outside the root so that nothing it needs is installed
    # there: the root holds the package and what it depends on, nothing else.
    mkdir -p /tmp/.X11-unix
    Xvfb -displayfd 3 -nolisten tcp -screen 0 1280x1024x24 3>"$root/tmp/display" 2>/dev/null &
    xvfb=$!
    for _ in $(seq 100); do [ -s "$root/tmp/display" ] && break; sleep 0.05; done
    display=:$(cat "$root/tmp/display")
    bind /tmp/.X11-unix /tmp/.X11-unix --bind

    cp "$here/deb-smoke.sh" "$root/tmp/"
    in_root DISPLAY="$display" bash /tmp/deb-smoke.sh /usr/bin /tmp/smoke "$version" ||
        failures=$((failures + 1))
    shot="$(dirname "$deb")/check-deb-live.png"
    cp "$root/tmp/smoke/live.png" "$shot" 2>/dev/null && echo "screenshot kept as $shot"
fi

if [ "$failures" -ne 0 ]; then
    echo "check-deb: $failures check(s) failed" >&2
    exit 1
fi
echo "check-deb: all checks passed"
