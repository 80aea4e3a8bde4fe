#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the checkers need,
# only those that are missing. Run as root on Debian 12 (bookworm).
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config   # the build
  libgtest-dev libgmock-dev          # unit tests
  libbenchmark-dev                   # bench/
  libicu-dev                         # case mapping and folding of non-ASCII names
  libcairo2-dev                      # the preview canvas draws with cairo
  libfreetype-dev libfontconfig-dev  # text widths from the faces themselves
  fonts-dejavu-core fontconfig       # faces for texts whose fonts the machine lacks
  python3-ezdxf                      # independent DXF checker used by tests
  librecad                           # a second independent DXF reader for the tests
  pybind11-dev python3-dev           # the Python module tovik (python/)
  python3-pytest                     # its tests
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  if [ "$(id -u)" -ne 0 ]; then
    echo "missing packages: ${missing[*]} (run as root to install them)" >&2
    exit 1
  fi
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
