#!/usr/bin/env bash
# Installs the Debian packages the project builds and runs with, when any is
# missing; with --tests also what the tests use (real buses, panels, servers).
set -euo pipefail
packages=(g++ cmake make pkg-config libgtest-dev libgmock-dev libbenchmark-dev libicu-dev nlohmann-json3-dev tmux python3
  libsdbus-c++-dev libsystemd-dev)
test_packages=(dbus prosody finch python3-slixmpp)
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
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq -o DPkg::Lock::Timeout=600 "${missing[@]}" > /dev/null
fi
