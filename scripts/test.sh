#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test through CTest.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/setup.sh" build run test
cd "$here/build"
# Each test sets its own platform: offscreen, or X for the titles test.
ctest --output-on-failure --timeout 60 -j "$(nproc)"
