#!/usr/bin/env bash
# Sets up, builds and runs the status-bar program on the built-in scenario.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKIB_BENCHMARKS=OFF > /dev/null
cmake --build build -j"$(nproc)" --target kibbar
exec build/host/kibbar "$@"
