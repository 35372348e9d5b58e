#!/usr/bin/env bash
# Installs what is missing, builds, and starts Kalvex2 from its program folder (build/program).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/setup.sh" build run
program="$here/build/program/kalvex2"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  cat >&2 <<TXT
Kalvex2 is built in $here/build/program, but there is no display to show its windows on
(neither DISPLAY nor WAYLAND_DISPLAY is set). Start it in a desktop session, or on a virtual one:
    sudo apt-get install xvfb && xvfb-run -a -s '-screen 0 1280x1024x24' "$program"
TXT
  exit 1
fi
exec "$program"
