#!/usr/bin/env bash
# Regenerates docs/verification.md from runs of TreModal: the shear building
# against its closed form, and a space frame against an eigen-solution and
# sums worked out by numpy, and tremodal-ccx against CalculiX (ccx, which
# scripts/install-deps.sh installs). Needs Debian's python3-numpy, installed here if it
# is missing; neither the build nor the tests need it.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
# Debian's own interpreter, which sees Debian's numpy whatever else is on PATH.
py=/usr/bin/python3
"$root/scripts/install-numpy.sh"
"$root/scripts/build.sh" --target TreModal make_example_model tremodal-ccx
"$py" "$root/scripts/verification/make_page.py" --build "$root/build" --out "$root/docs/verification.md" "$@"
