#!/usr/bin/env bash
# The main job on the shipped example model: installs what is needed, builds
# TreModal and the example writer (not the tests), writes the example shear
# building, and runs TreModal in batch on it with a settings file of its own
# (never the user's) and a stand-in casepost.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" --target TreModal make_example_model

work=$(mktemp -d "${TMPDIR:-/tmp}/tremodal-example-XXXXXX")
mkdir -p "$work/model" "$work/bin" "$work/config/VARNEK"
"$root/build/make_example_model" "$work/model" --name SHEAR --storeys 5
install -m 755 "$root/scripts/casepost-standin.sh" "$work/bin/casepost"
printf '[Setup]\nFiles1=%s\nFiles2=%s\n' "$work/model" "$work/bin" > "$work/config/VARNEK/VARNEK.conf"
printf '"%s","SHEAR"\r\n' "$work/model/SHEAR" > "$work/model/MODEL.NAM"

echo
echo "== TreModal 1/20/ on the example model =="
status=0
(cd "$work/model" && env -u DISPLAY -u WAYLAND_DISPLAY XDG_CONFIG_HOME="$work/config" \
  "$root/build/TreModal" 1/20/) || status=$?
echo "TreModal exit status: $status"

echo
echo "== What the run left in $work/model =="
ls -l "$work/model"

# The report (spectrum, participation) is kept in the results case file as
# comment lines behind the options; show it as the dialog would.
results="$work/model/SHEAR.L20"
if [ -f "$results" ]; then
  echo
  echo "== The report of the run (from SHEAR.L20) =="
  tr -d '\r' < "$results" | sed -n '/^ACOM,------SPECTRUM and PARTICIPATION DATA/,$p' | sed '1d; s/^ACOM,//'
fi
for f in "$work/model/response.cnt" "$work/model/SHEAR.LOG"; do
  if [ -f "$f" ]; then echo; echo "-- $(basename "$f") --"; tr -d '\r' < "$f"; fi
done
echo
echo "The results are in $work/model:"
echo "  SHEAR.HS1, SHEAR.HS3   modal response of directions 1 (x) and 3 (z): frequencies and mode blocks"
echo "  SHEAR.L20              results case 20: options and report as comment lines"
echo "  SHEAR.W20 .120 .220    the results case's binary files; SHEAR.NSL the load case list"
echo "  response.cnt           the summary casepost reads"
exit "$status"
