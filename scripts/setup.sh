#!/usr/bin/env bash
# Installs the Debian packages that are missing for the given roles (build, run, test, bench),
# then configures and builds with CMake and Ninja into build/.
# Usage: scripts/setup.sh [ROLE...]   (default: build run)
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
roles=("$@")
[ ${#roles[@]} -gt 0 ] || roles=(build run)

wanted=()
for role in build "${roles[@]}"; do
  line=$(grep -E "^${role}:" "$here/scripts/packages.txt" || true)
  [ -n "$line" ] || { echo "setup: unknown role '$role'" >&2; exit 2; }
  read -r -a names <<<"${line#*:}"
  wanted+=("${names[@]}")
done

missing=()
for package in $(printf '%s\n' "${wanted[@]}" | sort -u); do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo=""
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "setup: run as root or install sudo to add: ${missing[*]}" >&2; exit 1; }
    sudo="sudo"
  fi
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# In CI a warning fails the build: the code is kept free of them.
werror=OFF
[ -z "${CI:-}" ] || werror=ON
cmake -S "$here" -B "$here/build" -G Ninja -DCMAKE_BUILD_TYPE="${CMAKE_BUILD_TYPE:-RelWithDebInfo}" \
  -DKALVEX_WERROR="$werror" >/dev/null
cmake --build "$here/build"
