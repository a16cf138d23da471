#!/usr/bin/env bash
# Installs the Debian 12 packages a task needs, skipping what is there.
#   scripts/install-deps.sh build   compiler, CMake, Qt, libsndfile, test and benchmark
#                                   libraries, the sound server the audio tests run on and
#                                   the X server the CPU script (bench/cpu_live.sh) runs in
#   scripts/install-deps.sh ci      the above, plus clang's libFuzzer runtime
set -euo pipefail

build_pkgs=(g++ cmake ninja-build make pkg-config fonts-dejavu-core
            qt6-base-dev qt6-serialport-dev qt6-multimedia-dev libsndfile1-dev
            libgtest-dev libgmock-dev libbenchmark-dev pulseaudio xvfb)
ci_pkgs=(clang libclang-rt-14-dev)

want=("${build_pkgs[@]}")
case "${1:-build}" in
    build) ;;
    ci) want+=("${ci_pkgs[@]}") ;;
    *) echo "usage: $0 [build|ci]" >&2; exit 2 ;;
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
