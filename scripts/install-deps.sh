#!/usr/bin/env bash
# Installs what TreModal needs to build and test, from Debian's packages.
set -euo pipefail
# clang and its runtime libraries (libFuzzer, the sanitizers) build the fuzz targets;
# calculix-ccx is the solver of tremodal-ccx and its tests.
packages=(cmake g++ ninja-build qt6-base-dev libgtest-dev libgmock-dev time fonts-dejavu-core clang calculix-ccx
  libclang-rt-14-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
