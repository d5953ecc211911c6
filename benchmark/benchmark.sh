#!/usr/bin/env bash
# Times TreModal in batch on large example models and sets each run against
# its I/O floor: the time to read the run's input files (cat > /dev/null) and
# to write as many bytes as the run wrote (dd), measured in the same session.
# The large model runs on one worker thread and on two (TREMODAL_THREADS), and
# once more as a vectorised numpy script of the same work up to casepost
# (numpy_pipeline.py beside this script), timed the same way. The many-modes
# model runs under every combination method on one thread and on two.
# Last, once each, the double sums at the ceiling of 32,767 modes that the
# suite can count, on a frequency case of a few nodes (ceiling_case.py).
#
#   bash benchmark/benchmark.sh            the full models (about 4 GB of disk, a few minutes)
#   bash benchmark/benchmark.sh --tiny     the same models at a tiny size: a smoke test
#   bash benchmark/benchmark.sh --ceiling  the ceiling runs alone (a minute or two)
#   options: --runs N (5), --build DIR (build), --work DIR (a new temporary directory),
#            --ceiling-modes M (32,767; 300 with --tiny)
#
# The full run installs Debian's python3-numpy when it is missing; a tiny run
# times the numpy script only when numpy is there, and says so when not. The
# ceiling's case is written by a Python script of the standard library alone;
# without Python the ceiling is skipped, and says so.
#
# Columns: median wall time of the runs, and of the part before casepost
# starts (the rest is the wait for the first 100 ms tick of the child poll;
# the numpy script starts no casepost);
# the floor, the fastest of its tries, with its read and write times; median
# wall / floor; peak resident memory of the runs, and against the frequency
# case file's size; bytes read and written by a run (the kernel's count of
# the process's read and write calls).
#
# Every timed step starts after a sync, with no earlier writes still going
# out to the disk, and right after the step before it has freed the files it
# wrote. A virtual machine may hand memory that lies free back to its host,
# and the first write into such memory costs up to ten times a write into
# memory in use. The runs meet memory in use; the floor is taken twice after
# each run (see below), and the fastest try, in memory in use as well, is the
# floor that a machine of its own would show. One untimed run comes first.
# Last, the best run of the numpy script against the best run of TreModal up
# to casepost.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
runs=5
build="$root/build"
work=""
tiny=0
ceiling_only=0
ceiling_modes_set=""
while [ $# -gt 0 ]; do
  case "$1" in
    --tiny) tiny=1 ;;
    --ceiling) ceiling_only=1 ;;
    --ceiling-modes) ceiling_modes_set="$2"; shift ;;
    --runs) runs="$2"; shift ;;
    --build) build="$2"; shift ;;
    --work) work="$2"; shift ;;
    *) echo "usage: benchmark.sh [--tiny] [--ceiling] [--ceiling-modes M] [--runs N] [--build DIR]" \
         "[--work DIR]" >&2; exit 2 ;;
  esac
  shift
done
tool="$build/make_example_model"
program="$build/TreModal"
for f in "$tool" "$program" /usr/bin/time; do
  [ -x "$f" ] || { echo "benchmark.sh: $f is missing (scripts/build.sh, scripts/install-deps.sh)" >&2; exit 2; }
done
# Debian's own interpreter, which sees Debian's numpy whatever else is on PATH.
py=/usr/bin/python3
[ "$tiny" = 1 ] || "$root/scripts/install-numpy.sh"
have_numpy=0
"$py" -c "import numpy" 2>/dev/null && have_numpy=1
if [ -z "$work" ]; then
  work=$(mktemp -d "${TMPDIR:-/tmp}/tremodal-bench-XXXXXX")
  trap 'rm -rf "$work"' EXIT
fi
mkdir -p "$work"
# Where the numpy script writes its response files.
scratch="$work/numpy-out"
mkdir -p "$scratch"

# The model sizes: storeys x columns a floor, kept modes, the square
# models' storeys (6 equations a floor), and the modes of the ceiling case.
if [ "$tiny" = 1 ]; then
  large=(--storeys 20 --nodes-per-floor 5 --modes 20)
  many=(--storeys 30)
  square_small=(--storeys 5 --modes 10)
  square=(--storeys 10 --modes 10)
  ceiling_modes=300
else
  large=(--storeys 5999 --nodes-per-floor 5 --modes 200)   # 30,000 nodes, 179,970 equations
  many=(--storeys 1500)                                     # 3,000 equations, 3,000 modes
  square_small=(--storeys 250 --modes 20)                   # 1,500 equations
  square=(--storeys 500 --modes 20)                         # 3,000 equations
  ceiling_modes=32767
fi
ceiling_modes="${ceiling_modes_set:-$ceiling_modes}"

median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
minimum() { printf '%s\n' "$@" | sort -g | head -1; }
maximum() { printf '%s\n' "$@" | sort -g | tail -1; }
io_counts() { awk '/^rchar:/ { r = $2 } /^wchar:/ { w = $2 } END { print r, w }' "/proc/$$/io"; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", b - a }'; }
# What a run of wall time $1 adds over one of $2, for each of two directions.
per_direction() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", (a - b) / 2 }'; }
on_threads() { [ "$1" = 1 ] && echo "1 thread" || echo "$1 threads"; }
grouped() { sed -E ':a; s/([0-9])([0-9]{3})($|,)/\1,\2\3/; ta' <<< "$1"; }

# A model directory laid out as the suite's Files1, with its own settings
# file and a stand-in casepost.
write_model() {
  local dir="$1"; shift
  rm -rf "$dir"
  mkdir -p "$dir/bin" "$dir/config/VARNEK"
  "$tool" "$dir" --name-file "$@" > /dev/null
  # The stand-in notes when it starts, and ends at once.
  printf '#!/bin/sh\ndate +%%s.%%N > "%s/casepost.started"\n' "$work" > "$dir/bin/casepost"
  chmod +x "$dir/bin/casepost"
  printf '[Setup]\nFiles1=%s\nFiles2=%s\n' "$dir" "$dir/bin" > "$dir/config/VARNEK/VARNEK.conf"
}

# Removes what a run wrote, leaving the model's own files: the files beside
# them and the numpy script's files.
remove_outputs() {
  local dir="$1" f
  shift
  for f in "$dir"/* "$scratch"/*; do
    [ -f "$f" ] || continue
    [[ " $* " == *" $f "* ]] || rm -f "$f"
  done
}

# What /usr/bin/time notes of a run in $work/usage: its peak resident memory
# (KiB) and the processor time it took (user and system, s).
usage='%M %U %S'

# One run on the model in $1 as the suite's batch tool starts it, with no
# screen, on $threads worker threads when that is set.
run_tremodal() {
  local dir="$1"
  (cd "$dir" && env -u DISPLAY -u WAYLAND_DISPLAY XDG_CONFIG_HOME="$dir/config" \
    ${threads:+TREMODAL_THREADS="$threads"} /usr/bin/time -f "$usage" -o "$work/usage" "$program" 1/20/)
}

# One run of the numpy script on the model in $1, the same options set.
run_numpy() {
  local dir="$1"
  (cd "$dir" && PYTHONDONTWRITEBYTECODE=1 /usr/bin/time -f "$usage" -o "$work/usage" \
    "$py" "$here/numpy_pipeline.py" "$dir" 1 --out "$scratch" > /dev/null)
}

# One run of $3 (run_tremodal, run_numpy) on the model in $1, labelled $2,
# whose own files are $4 and on: it starts from the model alone, as a first
# run does, right after the files of the step before are gone. Leaves its
# start and end in run_start and run_end, and the bytes it read and wrote in
# run_read and run_written. A failed run ends the benchmark with its log.
timed_run() {
  local dir="$1" label="$2" run="$3" before after status=0
  shift 3
  remove_outputs "$dir" "$@"
  rm -f "$work/floor.out" "$work/casepost.started"
  sync
  read -r -a before < <(io_counts)
  run_start=$EPOCHREALTIME
  "$run" "$dir" || status=$?
  run_end=$EPOCHREALTIME
  read -r -a after < <(io_counts)
  if [ "$status" != 0 ]; then
    echo "benchmark.sh: $label failed (status $status):" >&2
    cat "$dir/SHEAR.LOG" >&2 2>/dev/null || true
    exit 1
  fi
  run_read=$((after[0] - before[0]))
  run_written=$((after[1] - before[1]))
}

# Runs $3 (run_tremodal, run_numpy) on the model in $1 once untimed and then
# $runs times, and prints one row labelled $2. Leaves the median wall time in
# last_wall, and the best wall time and time to casepost in best_wall and
# best_post.
measure() {
  local dir="$1" label="$2" run="$3"
  local inputs=() walls=() posts=() floors=() reads=() writes=() rss=() peak f
  for f in "$dir"/*; do [ -f "$f" ] && inputs+=("$f"); done
  local read_bytes=0 written_bytes=0
  for ((i = 0; i <= runs; i++)); do
    timed_run "$dir" "$label" "$run" "${inputs[@]}"
    [ "$i" -gt 0 ] || continue
    walls+=("$(elapsed "$run_start" "$run_end")")
    [ ! -f "$work/casepost.started" ] ||
      posts+=("$(elapsed "$run_start" "$(cat "$work/casepost.started")")")
    read -r peak _ < <(tail -1 "$work/usage")
    rss+=("$peak")
    read_bytes="$run_read"
    written_bytes="$run_written"

    # The floor: the inputs read once, the same bytes written once, right
    # after the run's files are gone; and once more right after the first
    # floor's file is gone, since the run's files and memory together may be
    # more than the machine keeps back from its host.
    sync
    remove_outputs "$dir" "${inputs[@]}"
    local t1 t2 t3
    for try in 1 2; do
      rm -f "$work/floor.out"
      sync
      t1=$EPOCHREALTIME
      cat "${inputs[@]}" > /dev/null
      t2=$EPOCHREALTIME
      dd if=/dev/zero of="$work/floor.out" bs=4M iflag=count_bytes count="$written_bytes" status=none
      t3=$EPOCHREALTIME
      reads+=("$(elapsed "$t1" "$t2")")
      writes+=("$(elapsed "$t2" "$t3")")
      floors+=("$(elapsed "$t1" "$t3")")
    done
  done
  rm -f "$work/floor.out"
  # The fastest floor, with the read and write times of that try.
  local fastest
  fastest=$(printf '%s\n' "${floors[@]}" | awk 'NR == 1 || $1 < least { least = $1; at = NR - 1 } END { print at }')
  local wall post="" case_bytes
  wall=$(median "${walls[@]}")
  [ ${#posts[@]} -eq 0 ] || post=$(median "${posts[@]}")
  peak=$(maximum "${rss[@]}")
  case_bytes=$(stat -c %s "$dir/SHEAR.H1")
  awk -v l="$label" -v w="$wall" -v po="$post" -v r="${reads[fastest]}" \
      -v wr="${writes[fastest]}" -v f="${floors[fastest]}" -v p="$peak" -v h="$case_bytes" \
      -v rb="$read_bytes" -v wb="$written_bytes" 'BEGIN {
    printf "%-28s %7.3f %9s %7.3f %7.3f %7.3f %6.2f %9.1f %7.2f %8.1f %10.1f\n",
      l, w, (po == "" ? "-" : sprintf("%.3f", po)), r, wr, f, (f > 0 ? w / f : 0), p / 1024, p * 1024 / h,
      rb / 1e6, wb / 1e6 }'
  last_wall="$wall"
  best_wall=$(minimum "${walls[@]}")
  best_post=""
  [ ${#posts[@]} -eq 0 ] || best_post=$(minimum "${posts[@]}")
}

# The ceiling: 32,767 modes over the three nodes of a two-storey model, its
# frequency case written over the example's by ceiling_case.py, directions 1
# and 3. One run each of SRSS, CQC and DSM on one thread and on two, right
# after the run before it (a run of the double sums takes seconds, its files
# a few megabytes); prints their wall and processor times (the processor
# time of a run on two threads is that of both, and tells on a busy machine
# what the run would take on one of its own), then what CQC and DSM add over
# SRSS per direction in wall time.
ceiling() {
  local dir="$work/ceiling" method inputs f
  local -A wall cpu
  echo
  if [ ! -x "$py" ]; then
    echo "Ceiling skipped: no $py to write its frequency case (a full run installs python3-numpy)"
    return
  fi
  echo "Ceiling: $(grouped "$ceiling_modes") modes over 3 nodes, 4 equations, directions 1 and 3;" \
    "one run each"
  printf '%-7s %16s %8s %17s %8s\n' method "1 thread: wall s" "CPU s" "2 threads: wall s" "CPU s"
  for method in SRSS CQC DSM; do
    write_model "$dir" --storeys 2 --directions 13 --comb "$method"
    PYTHONDONTWRITEBYTECODE=1 "$py" "$here/ceiling_case.py" "$dir/SHEAR.H1" "$dir/SHEAR.H1" "$ceiling_modes"
    inputs=()
    for f in "$dir"/*; do [ -f "$f" ] && inputs+=("$f"); done
    for threads in 1 2; do
      timed_run "$dir" "ceiling, $method, $(on_threads "$threads")" run_tremodal "${inputs[@]}"
      wall[$method$threads]=$(elapsed "$run_start" "$run_end")
      cpu[$method$threads]=$(tail -1 "$work/usage" | awk '{ printf "%.2f", $2 + $3 }')
    done
    printf '%-7s %16.3f %8.2f %17.3f %8.2f\n' "$method" "${wall[${method}1]}" "${cpu[${method}1]}" \
      "${wall[${method}2]}" "${cpu[${method}2]}"
  done
  threads=""
  rm -rf "$dir"
  echo "Ceiling, $(grouped "$ceiling_modes") modes: s per direction over SRSS:" \
    "CQC 1 thread $(per_direction "${wall[CQC1]}" "${wall[SRSS1]}")," \
    "2 threads $(per_direction "${wall[CQC2]}" "${wall[SRSS2]}");" \
    "DSM 1 thread $(per_direction "${wall[DSM1]}" "${wall[SRSS1]}")," \
    "2 threads $(per_direction "${wall[DSM2]}" "${wall[SRSS2]}")"
}

if [ "$ceiling_only" = 1 ]; then
  ceiling
  exit 0
fi

printf '%-28s %7s %9s %7s %7s %7s %6s %9s %7s %8s %10s\n' \
  model "wall s" "to post s" "read s" "write s" "floor s" ratio "peak MiB" "RSS/.H" "MB read" "MB written"

# The large model, dirs 1-3 and CQC, on one worker thread and on two, and as
# the numpy script.
write_model "$work/large" "${large[@]}" --all-freedoms --directions 123 --comb CQC
threads=1
measure "$work/large" "large, 1 thread" run_tremodal
best_post_1="$best_post"
threads=2
measure "$work/large" "large, 2 threads" run_tremodal
best_post_2="$best_post"
threads=""
if [ "$have_numpy" = 1 ]; then
  measure "$work/large" "large, numpy" run_numpy
  best_numpy="$best_wall"
else
  printf '%-28s %s\n' "large, numpy" "skipped: $py cannot import numpy (a full run installs python3-numpy)"
fi
rm -rf "$work/large"

# The many-modes model under each method, on one worker thread and on two.
declare -A srss_wall extra_per_direction
for method in SRSS CQC GROUP DSM ABS; do
  write_model "$work/many" "${many[@]}" --directions 13 --comb "$method"
  for threads in 1 2; do
    measure "$work/many" "many modes, $method, $(on_threads "$threads")" run_tremodal
    [ "$method" != SRSS ] || srss_wall[$threads]="$last_wall"
    extra_per_direction[$threads]+=" $method $(per_direction "$last_wall" "${srss_wall[$threads]}")"
  done
done
threads=""
rm -rf "$work/many"

write_model "$work/square" "${square_small[@]}" --all-freedoms --mass-form square --directions 13
measure "$work/square" "square, half size" run_tremodal
write_model "$work/square" "${square[@]}" --all-freedoms --mass-form square --directions 13
measure "$work/square" "square" run_tremodal
rm -rf "$work/square"

echo
echo "Many modes, time a method adds over SRSS per direction (s), 1 thread:${extra_per_direction[1]}"
echo "Many modes, time a method adds over SRSS per direction (s), 2 threads:${extra_per_direction[2]}"
if [ "$have_numpy" = 1 ]; then
  awk -v n="$best_numpy" -v a="$best_post_1" -v b="$best_post_2" -v runs="$runs" 'BEGIN {
    printf "Large model, best of %d runs: numpy script %.3f s; TreModal to casepost %.3f s on 1 thread, ", runs, n, a
    printf "%.3f s on 2\n", b
    printf "numpy wall / TreModal to post (best against best): %.2f (1 thread), %.2f (2 threads)\n",
      (a > 0 ? n / a : 0), (b > 0 ? n / b : 0) }'
fi

ceiling
