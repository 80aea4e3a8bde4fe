#!/usr/bin/env bash
# Installs what is missing, builds the tovik command line and runs it on a
# bundled drawing.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake --preset default > /dev/null
cmake --build --preset default -j 2 --target tovik tovik_python
./build/default/cli/tovik --version
./build/default/cli/tovik classes
./build/default/cli/tovik info data/colors.dxf
./build/default/cli/tovik preview data/colors.dxf -o build/colors.png --size 800x600
echo "picture: build/colors.png"
# An add-in script run on the drawing through the Python module.
./build/default/cli/tovik run examples/count_by_layer.py data/colors.dxf -o build/demo-run --jobs 1
echo "entities by layer and block: build/demo-run/COUNT-colors.csv"
head -5 build/demo-run/COUNT-colors.csv
