#!/usr/bin/env bash
# Installs what is missing, builds the project twice (optimised, and with
# AddressSanitizer + UndefinedBehaviorSanitizer) and runs every test in both.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

for preset in default asan; do
  echo "== build: $preset"
  cmake --preset "$preset" > /dev/null
  cmake --build --preset "$preset" -j 2
  echo "== tests: $preset"
  ctest --preset "$preset"
done
