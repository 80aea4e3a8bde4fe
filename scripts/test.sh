#!/usr/bin/env bash
# Installs what is missing, builds the project twice (optimised, and with
# AddressSanitizer + UndefinedBehaviorSanitizer) and runs every test in both;
# then builds the Windows automation servers and runs their suite under Wine.
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

echo "== Windows servers under Wine"
bash scripts/windows-test.sh
