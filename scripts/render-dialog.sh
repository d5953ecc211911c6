#!/usr/bin/env bash
# Renders the dialog without a screen, so that anyone can look at it: the
# fresh form and the form with the report viewer open after a run of the
# example model's options, as PNG files in OUTDIR (default build/render).
# Usage: scripts/render-dialog.sh [OUTDIR]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" >/dev/null
out="$(mkdir -p "${1:-$root/build/render}" && cd "${1:-$root/build/render}" && pwd)"

work=$(mktemp -d "${TMPDIR:-/tmp}/tremodal-render-XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/config/VARNEK"
"$root/build/make_example_model" "$work" --name SHEAR --storeys 5 --name-file >/dev/null
printf '[Setup]\nFiles1=%s\nFiles2=%s\n' "$work" "$work/bin" > "$work/config/VARNEK/VARNEK.conf"
(cd "$work" && QT_QPA_PLATFORM=offscreen XDG_CONFIG_HOME="$work/config" "$root/build/render_dialog" "$out")
