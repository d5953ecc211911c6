#!/usr/bin/env bash
# Installs Debian's python3-numpy when Debian's own interpreter, which sees
# it whatever else is on PATH, cannot import numpy. Only the verification
# page and the benchmark use it; neither the build nor the tests do.
set -euo pipefail
/usr/bin/python3 -c "import numpy" 2>/dev/null && exit 0
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q
$sudo apt-get install -y -q --no-install-recommends python3 python3-numpy
