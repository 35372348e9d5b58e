#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test through CTest.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/setup.sh" build run test
cd "$here/build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --timeout 600 -j "$(nproc)"
