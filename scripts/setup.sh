#!/usr/bin/env bash
# Installs the Debian packages the project builds with, when any is missing.
#   scripts/setup.sh           what building and running need
#   scripts/setup.sh --tests   and what only the tests need (the fuzzers' clang)
set -euo pipefail
packages=(g++ cmake make pkg-config libgtest-dev libgmock-dev libbenchmark-dev libicu-dev nlohmann-json3-dev tmux python3)
test_packages=(clang-14 libclang-rt-14-dev libfuzzer-14-dev)
if [ "${1:-}" = "--tests" ]; then
  packages+=("${test_packages[@]}")
fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" > /dev/null
fi
