#!/usr/bin/env bash
# Installs the Debian 12 packages a task needs, skipping what is there.
#   scripts/install-deps.sh build   compiler, CMake, Qt, libsndfile, libmpg123, test and
#                                   benchmark libraries, the sound server the audio tests run
#                                   on, sox and lame, which make the tests' sound files, the
#                                   PDF text reader the guide's test reads pages with, and the
#                                   X server the CPU script (bench/cpu_live.sh) runs in
#   scripts/install-deps.sh ci      the above, plus clang's libFuzzer runtime
#   scripts/install-deps.sh package the build set, plus what makes and checks the
#                                   .deb: dpkg-dev, lintian, the desktop and
#                                   AppStream validators, debootstrap and Xvfb
set -euo pipefail

build_pkgs=(g++ cmake ninja-build make pkg-config fonts-dejavu-core
            qt6-base-dev qt6-serialport-dev qt6-multimedia-dev libsndfile1-dev libmpg123-dev
            libgtest-dev libgmock-dev libbenchmark-dev pulseaudio sox lame xvfb)
# The man pages are made from the programs' --help at build time.
build_pkgs+=(help2man)
# Draws the window's icon, which is an SVG.
build_pkgs+=(libqt6svg6)
ci_pkgs=(clang libclang-rt-14-dev)
# dpkg-shlibdeps and file for CPack; the validators and the bare-root check.
package_pkgs=(dpkg-dev file lintian desktop-file-utils appstream shared-mime-info
              debootstrap xvfb)

want=("${build_pkgs[@]}")
case "${1:-build}" in
    build) ;;
    ci) want+=("${ci_pkgs[@]}") ;;
    package) want+=("${package_pkgs[@]}") ;;
    *) echo "usage: $0 [build|ci|package]" >&2; exit 2 ;;
esac

missing=()
for p in "${want[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
