#!/usr/bin/env bash
# Installs what is needed, builds, and runs every test twice: once in a plain
# build, once under AddressSanitizer and UndefinedBehaviorSanitizer; then
# every fuzz target replays its seeds and fuzzes for a few seconds.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
"$root/scripts/build.sh" sanitize
export QT_QPA_PLATFORM=offscreen
# Absurd sizes in damaged files must come back as a failed allocation, not an abort.
export ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
echo "== tests =="
ctest --test-dir "$root/build" --output-on-failure -j "$(nproc)" || status=1
echo "== tests under AddressSanitizer and UndefinedBehaviorSanitizer =="
ctest --test-dir "$root/build-sanitize" --output-on-failure -j "$(nproc)" || status=1
echo "== fuzz targets, briefly =="
"$root/scripts/fuzz.sh" --ci || status=1
exit $status
