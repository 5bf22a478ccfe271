#!/usr/bin/env bash
# Sets up, builds warning-free and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --tests
cmake -S . -B build -DKIB_WERROR=ON > /dev/null
cmake --build build -j"$(nproc)"
ctest --test-dir build --output-on-failure -j"$(nproc)"
