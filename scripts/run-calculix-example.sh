#!/usr/bin/env bash
# A whole response spectrum analysis with CalculiX as the solver, missing mass
# included, on the small 3-D building of examples/calculix/building.inp:
# tremodal-ccx modes writes the model, TreModal's first pass writes the
# missing mass load cases, tremodal-ccx solve solves them with ccx, the second
# pass reads them back, and TreModal --report shows the figures with CSV
# tables and charts. Installs what is needed (ccx among it) and builds the
# programs (not the tests); the settings file is the script's own, never the
# user's, and casepost is a stand-in.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" --target TreModal tremodal-view tremodal-ccx

work=$(mktemp -d "${TMPDIR:-/tmp}/tremodal-calculix-XXXXXX")
model="$work/model"
mkdir -p "$model" "$work/bin" "$work/config/VARNEK" "$work/results"
cp "$root/examples/calculix/building.inp" "$work/building.inp"
install -m 755 "$root/scripts/casepost-standin.sh" "$work/bin/casepost"
printf '[Setup]\nFiles1=%s\nFiles2=%s\n' "$model" "$work/bin" > "$work/config/VARNEK/VARNEK.conf"
printf '"%s","BUILDING"\r\n' "$model/BUILDING" > "$model/MODEL.NAM"
trem() { (cd "$model" && env -u DISPLAY -u WAYLAND_DISPLAY XDG_CONFIG_HOME="$work/config" "$root/build/TreModal" "$@"); }

echo "== tremodal-ccx modes: the 12 lowest modes of the building =="
"$root/build/tremodal-ccx" modes "$work/building.inp" "$model/BUILDING" --modes 12

# Options set 1: both horizontal directions, CQC, 5 % damping, missing mass
# on with its cases from 10, the ZPA from the curve's first point; the curve
# is a design spectrum in g (0.2 g at 0.03 s, a plateau of 0.5 g).
crlf() { printf '%s\r\n' "$@"; }
crlf "Frequency (Mass) Case Number         ,1" "Results Case Number                  ,20" \
  "Single Mode (non-zero is active)     , 0 " "Response Spectrum File               ,MODEL.URS1" \
  "Spectrun Type  0-Disp 1-Vel 2-Accel  , 2" "Specrum Curve Factor                 , 9.81" \
  "Principal Direction                  , 0" "Interpolation Method 0-Linear 1-Log  , 0" \
  "Spectrum Direction Definition" "Dir Factors   On/Off" \
  " 1             1 " " 0.5           0 " " 1             1 " \
  " 0.0014875     0 " " 0.0025        0 " " 0.002125      0 " \
  "Subsoil Shear Wave veleocity           , 400" "Rotation Datum (Ground)   X   Y   Z    , 0  0  0 " \
  "Modal Combination Method               , 1 " "Earthquake Duration (Secs)             , 10" \
  "Modal Damping Ratio                    , .05" "Element force sign is based on Mode    , 0 " \
  "Missing Mass Case (1 is active)        , 1 ,10" "ZPZ Option (1 is higest mode)          , 0 " \
  > "$model/BUILDING.USM1"
crlf "0.03,0.2" "0.1,0.5" "0.5,0.5" "1,0.25" "4,0.0625" "-1" > "$model/BUILDING.URS1"

echo
echo "== TreModal 1/20/1/: the first pass writes the missing mass load cases =="
trem 1/20/1/
echo
echo "== tremodal-ccx solve: ccx solves them =="
"$root/build/tremodal-ccx" solve "$work/building.inp" "$model/BUILDING"
echo
echo "== TreModal 1/20/2/: the second pass reads them back =="
trem 1/20/2/
echo
echo "== TreModal --report 1 =="
trem --report 1 --csv "$work/results" --plots "$work/results"

echo
echo "Everything is in $work:"
echo "  building.inp                     the CalculiX deck"
echo "  model/BUILDING.XSZ .XYZ .H1      the model tremodal-ccx modes wrote"
echo "  model/BUILDING.USM1 .URS1        the options set and the curve"
echo "  model/BUILDING.L10 .L12 .C0      the missing mass load cases and the run comb (first pass)"
echo "  model/BUILDING.R10 .R12          the cases solved by ccx (tremodal-ccx solve)"
echo "  model/BUILDING.HS1 .HS3 .L20     the modal response with the pseudo-mode, and the results case"
echo "  results/*.csv, results/*.png     the report's tables and charts"
