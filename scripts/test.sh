#!/usr/bin/env bash
# Sets up, builds warning-free and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --tests
source scripts/compiler-cache.sh
cmake -S . -B build -DKIB_WERROR=ON "${KIB_LAUNCHER[@]}" > /dev/null
cmake --build build -j"$(nproc)"
ctest --test-dir build --output-on-failure -j"$(nproc)"
