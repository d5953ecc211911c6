#!/usr/bin/env bash
# Builds TreModal, its tools and tests into build/ (or build-sanitize/ with
# "sanitize": AddressSanitizer and UndefinedBehaviorSanitizer on). With
# "--target T..." only those targets are built.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=build
flags=()
if [ "${1:-}" = "sanitize" ]; then
  dir=build-sanitize
  flags=(-DTREMODAL_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
  shift
fi
cmake -S . -B "$dir" -G Ninja "${flags[@]}" >/dev/null
cmake --build "$dir" -j "$(nproc)" "$@"
