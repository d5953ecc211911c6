#!/usr/bin/env bash
# The main job on the shipped example model: installs what is needed, builds,
# writes the example shear building, and runs TreModal in batch on it with a
# settings file of its own (never the user's) and a stand-in casepost.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"

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
for f in "$work/model/response.cnt" "$work/model/SHEAR.L20"; do
  if [ -f "$f" ]; then echo; echo "-- $(basename "$f") --"; tr -d '\r' < "$f"; fi
done
if [ -f "$work/model/SHEAR.LOG" ]; then echo; echo "-- SHEAR.LOG --"; tr -d '\r' < "$work/model/SHEAR.LOG"; fi
echo
echo "The results are in $work/model (response files SHEAR.HS*, results case SHEAR.L20, .W20, .120, .220)."
exit "$status"
