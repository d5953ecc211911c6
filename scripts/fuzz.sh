#!/usr/bin/env bash
# Fuzzes the readers with libFuzzer (clang): builds the targets of fuzz/ into
# build-fuzz/, writes their seed corpora from the example tool's models into
# build-fuzz/corpus/<target>/, and runs them.
#
#   scripts/fuzz.sh --ci                        every seed replayed, then a few seconds of every target
#   scripts/fuzz.sh --time SECONDS [TARGET...]  each target (all by default) fuzzed that long, in turn
#
# A target's findings (crash-*, timeout-*, oom-*, leak-*) land in
# build-fuzz/findings/<target>/ and make the script end with status 1; its
# output is in build-fuzz/logs/<target>.log.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build-fuzz"
all_targets=(model_name coordinates options frequency_case damping curve load_case_list solved_case job_extension
  whole_run ccx_output)
ci_seconds=8

usage() {
  echo "usage: $0 --ci | --time SECONDS [TARGET...]" >&2
  echo "targets: ${all_targets[*]}" >&2
  exit 2
}

seconds=""
case "${1:-}" in
  --ci) seconds=$ci_seconds; shift ;;
  --time) [ $# -ge 2 ] || usage; seconds=$2; shift 2 ;;
  *) usage ;;
esac
[[ "$seconds" =~ ^[0-9]+$ ]] || usage
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${all_targets[@]}")
for t in "${targets[@]}"; do
  [[ " ${all_targets[*]} " == *" $t "* ]] || { echo "no fuzz target $t" >&2; usage; }
done

cmake -S "$root" -B "$build" -G Ninja -DTREMODAL_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)" >/dev/null

# ---------------------------------------------------------------------------
# Seeds: the files of a few example models, laid out as each target takes
# its input. The fuzz targets read their models as FUZZ in the working dir.

examples="$build/examples"
scratch="$build/scratch"  # the pieces the seeds are made of
mark='@@FILE@@'

# The i16 n little-endian, as printf escapes.
i16() { printf '\\x%02x\\x%02x' $(($1 & 255)) $((($1 >> 8) & 255)); }
u8() { printf '\\x%02x' $(($1 & 255)); }

# Files joined into one input, a "@@FILE@@" line after each part but the last.
join_parts() {
  local first=1 part prev=""
  for part in "$@"; do
    if [ $first -eq 0 ]; then
      # A part that does not end its last line gets a line end before the mark.
      [ "$(tail -c 1 "$prev" | od -An -c | tr -d ' ')" = '\n' ] || printf '\n'
      printf '%s\n' "$mark"
    fi
    cat "$part"
    first=0
    prev=$part
  done
}

make_examples() {
  local variants=(
    ""
    "--mass-form square --mass-noise 0.1"
    "--directions 123456 --comb SRSS"
    "--comb GROUP --spectrum flat"
    "--comb DSM --all-freedoms --modes 4"
    "--comb ABS --storeys 2 --nodes-per-floor 2"
    "--storeys 1 --modes 1 --mass-form square"
  )
  rm -rf "$examples"
  local k=0 v
  for v in "${variants[@]}"; do
    # shellcheck disable=SC2086
    "$build/make_example_model" "$examples/$k" --name FUZZ $v >/dev/null
    k=$((k + 1))
  done
}

make_seeds() {
  local t=$1 dir="$build/corpus/$1" e n k=0
  mkdir -p "$dir"
  for e in "$examples"/*; do
    k=$((k + 1))
    n=$(($(stat -c %s "$e/FUZZ.XYZ") / 14))
    case $t in
      model_name)
        printf '"FUZZ","FUZZ"\r\n' >"$scratch/name"
        join_parts "$scratch/name" "$e/FUZZ.XSZ" >"$dir/seed-$k" ;;
      coordinates) { printf "$(i16 "$n")"; cat "$e/FUZZ.XYZ"; } >"$dir/seed-$k" ;;
      options) cp "$e/FUZZ.USM1" "$dir/seed-$k" ;;
      frequency_case) { printf "$(i16 "$n")"; cat "$e/FUZZ.H1"; } >"$dir/seed-$k" ;;
      curve)
        # Mode count, lowest omega in halves, and the reading's options.
        { printf "$(u8 10)$(u8 18)$(u8 $((k * 3)))"; cat "$e/FUZZ.URS1"; } >"$dir/seed-$k" ;;
      solved_case)
        # Node count, the first point's period in tenths; the solver's header, six singles a node.
        { printf "$(u8 "$n")$(u8 3)"; head -c 24 /dev/zero
          for ((i = 1; i <= n * 6; i++)); do printf '\x00\x00\x80\x3f'; done; } >"$dir/seed-$k" ;;
      whole_run)
        printf '1/20/\n' >"$scratch/plain"
        join_parts "$scratch/plain" "$e"/FUZZ.{XSZ,XYZ,USM1,H1,URS1} >"$dir/seed-$k"
        # Both passes of a missing mass analysis from case 10, the solved case left by the solver;
        # the curve starts at the ZPA period, which gives the pseudo-mode its frequency.
        sed 's/(1 is active)        , 0 ,0/(1 is active)        , 1 ,10/' "$e/FUZZ.USM1" >"$scratch/missmass"
        printf '0.03,0.3\r\n10,0.3\r\n-1\r\n' >"$scratch/flat"
        printf '1/20/1/\n' >"$scratch/first"
        join_parts "$scratch/first" "$e"/FUZZ.{XSZ,XYZ} "$scratch/missmass" "$e/FUZZ.H1" "$scratch/flat" \
          >"$dir/seed-$k-first"
        printf '1,0.02\r\n3,0.07\r\n-1\r\n' >"$scratch/damping"
        { head -c 24 /dev/zero; for ((i = 1; i <= n * 6; i++)); do printf '\x00\x00\x80\x3f'; done; } \
          >"$scratch/solved"
        printf '1/20/2/\n' >"$scratch/second"
        join_parts "$scratch/second" "$e"/FUZZ.{XSZ,XYZ} "$scratch/missmass" "$e/FUZZ.H1" "$scratch/flat" \
          "$scratch/damping" "$scratch/solved" >"$dir/seed-$k-second" ;;
    esac
  done
  case $t in
    damping)
      printf "$(u8 10)1,0.02\r\n3,0.07\r\n-1\r\n" >"$dir/seed-1"
      printf "$(u8 4)2 0.1 5 0.2\r\n" >"$dir/seed-2"
      printf "$(u8 3)1,0\r\n2,-1\r\n4,0.3\r\n" >"$dir/seed-3" ;;
    load_case_list)
      # Case 20 in a list of 21 records: flags, description, date and time.
      for ((i = 0; i <= 20; i++)); do
        printf '\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00'
        printf '%-50s%-20s' "SpectResp 1:FrqCase 1:Dir'n 0 Deg: CQC" "17/11/2026 10:00:00"
      done >"$scratch/list"
      { printf "$(i16 20)"; cat "$scratch/list"; } >"$dir/seed-1"
      { printf "$(i16 3)"; head -c 100 "$scratch/list"; } >"$dir/seed-2" ;;
    ccx_output)
      # The reader in the first byte: 0 .dat, 1 .frd, 2 .dof and .mas, 3 the deck; the files of ccx
      # on the example building where ccx is installed, short excerpts otherwise.
      local deck="$root/examples/calculix/building.inp"
      { printf "$(u8 3)"; cat "$deck"; } >"$dir/seed-deck"
      printf '\x00 MODE NO\n      1   0.4692984E+03   0.2166330E+02   0.3447821E+01   0.0000000E+00\n' >"$dir/seed-dat"
      printf '\x01 -4  DISP        4    1\n -1         9-3.22675E-05 6.14911E-06-4.92648E-05\n -3\n' >"$dir/seed-frd"
      printf '\x023.1\n3.2\n1 1  3.964E+03\n' >"$dir/seed-mas"
      if command -v ccx >/dev/null; then
        rm -rf "$scratch/ccx" && mkdir -p "$scratch/ccx"
        { cat "$deck"; printf '*NSET, NSET=ALLN\n1, 101, 102, 103, 111, 112, 113\n*STEP\n*FREQUENCY\n4\n*NODE PRINT, NSET=ALLN\nU\n*NODE FILE\nU\n*END STEP\n'; } \
          >"$scratch/ccx/b.inp"
        sed '/^\*STEP/,$d' "$scratch/ccx/b.inp" >"$scratch/ccx/m.inp"
        printf '*STEP\n*FREQUENCY, SOLVER=MATRIXSTORAGE\n4\n*END STEP\n' >>"$scratch/ccx/m.inp"
        (cd "$scratch/ccx" && ccx b >/dev/null 2>&1 && ccx m >/dev/null 2>&1) || true
        for f in b.dat:0 b.frd:1 m.dof:2 m.mas:2; do
          [ -f "$scratch/ccx/${f%%:*}" ] || continue
          { printf "$(u8 "${f##*:}")"; cat "$scratch/ccx/${f%%:*}"; } >"$dir/seed-ccx-${f%%:*}"
        done
      fi ;;
    job_extension)
      printf 'JOB\r\n' >"$dir/seed-1"
      printf '"BAT"\r\n' >"$dir/seed-2"
      printf '  xbt , other\r\n' >"$dir/seed-3" ;;
  esac
}

mkdir -p "$scratch" "$build/logs"
make_examples

# A timeout that a replay does not repeat was the machine's load, not the
# input: the fuzzers run beside builds on a small machine. It is set aside
# in unreproduced/ and does not count.
replay_timeouts() {
  local t=$1 artifact
  for artifact in "$build/findings/$t"/timeout-*; do
    [ -e "$artifact" ] || continue
    if "$build/fuzz/${t}_fuzz" -timeout=2 -rss_limit_mb=2048 -close_fd_mask=3 "$artifact" >/dev/null 2>&1; then
      mkdir -p "$build/findings/$t/unreproduced"
      mv "$artifact" "$build/findings/$t/unreproduced/"
      echo "   $(basename "$artifact") ran within the limit on replay: set aside"
    fi
  done
}

status=0
for t in "${targets[@]}"; do
  make_seeds "$t"
  findings="$build/findings/$t"
  mkdir -p "$findings"
  rm -rf "${build:?}/tmp/$t"
  mkdir -p "$build/tmp/$t"
  # The whole run writes the start-up failure line on standard error for
  # every input that fails: the fuzzer keeps its own output and reports.
  quiet=()
  [ "$t" = whole_run ] && quiet=(-close_fd_mask=2)
  echo "== $t: ${seconds}s"
  # One fuzzing process after another (-fork=1): a finding is written and
  # the fuzzing goes on with the next, so that one input does not end it.
  TMPDIR="$build/tmp/$t" "$build/fuzz/${t}_fuzz" -fork=1 -ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1 \
    -timeout=2 -rss_limit_mb=2048 -max_total_time="$seconds" -artifact_prefix="$findings/" "${quiet[@]}" \
    "$build/corpus/$t" >"$build/logs/$t.log" 2>&1 || status=1
  replay_timeouts "$t"
  runs=$(sed -n 's/^#\([0-9]*\): cov.*/\1/p' "$build/logs/$t.log" | tail -1)
  found=$(find "$findings" -maxdepth 1 -type f \( -name 'crash-*' -o -name 'timeout-*' -o -name 'oom-*' -o -name 'leak-*' \) |
    wc -l)
  echo "   ${runs:-?} runs, $found findings"
  [ "$found" -eq 0 ] || status=1
done
[ $status -eq 0 ] || echo "fuzzing found problems: see $build/findings and $build/logs" >&2
exit $status
