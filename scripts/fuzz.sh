#!/usr/bin/env bash
# Builds the fuzz targets with clang and libFuzzer (in build-fuzz/) and runs
# each for a fixed time. A crash stops the script with the fuzzer's report and
# the input that caused it (build-fuzz/fuzz/artifacts/).
#   scripts/fuzz.sh                    every target, 35 s each
#   FUZZ_SECONDS=600 scripts/fuzz.sh fuzz_script    one target, longer
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${FUZZ_SECONDS:-35}"
build="${FUZZ_BUILD_DIR:-build-fuzz}"
launcher=()
command -v ccache > /dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

cmake -S . -B "$build" -DKIB_FUZZ=ON -DCMAKE_CXX_COMPILER="${FUZZ_CXX:-clang++-14}" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DKIB_BENCHMARKS=OFF "${launcher[@]}" > /dev/null
cmake --build "$build" -j"$(nproc)" --target fuzz_targets

targets=("$@")
if ((${#targets[@]} == 0)); then
  mapfile -t targets < "$build/fuzz/targets.txt"
fi

artifacts="$build/fuzz/artifacts"
mkdir -p "$artifacts"
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
for target in "${targets[@]}"; do
  corpus="$build/fuzz/corpus/$target"
  mkdir -p "$corpus"
  echo "== $target: ${seconds} s =="
  # The first folder is the growing corpus; the seeds are read from the second.
  log="$build/fuzz/$target.log"
  status=0
  "$build/tests/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
    -print_final_stats=1 -artifact_prefix="$artifacts/$target-" "$corpus" "$build/fuzz/seeds/$target" \
    > "$log" 2>&1 || status=$?
  grep -E '^(stat::number_of_executed_units|stat::new_units_added|stat::peak_rss_mb)' "$log" || true
  if [ "$status" -ne 0 ]; then
    tail -n 60 "$log" >&2
    echo "fuzz: $target found a problem; the input is in $artifacts" >&2
    exit 1
  fi
done
echo "fuzz: no problems found"
