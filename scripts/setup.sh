#!/usr/bin/env bash
# Installs the Debian packages the project builds and runs with, when any is
# missing; with --tests also what the tests use (real buses, panels, servers,
# the package checks).
set -euo pipefail
packages=(g++ cmake make pkg-config libgtest-dev libgmock-dev libbenchmark-dev libicu-dev nlohmann-json3-dev tmux python3
  libsdbus-c++-dev libsystemd-dev
  libcairo2-dev libpango1.0-dev libpoppler-glib-dev libgdk-pixbuf-2.0-dev fonts-dejavu-core)
# dbus: private session buses; a real panel (xfce4-panel and its status-notifier
# plugin) under Xvfb, clicked with xdotool and photographed; a real XMPP server
# and libpurple client; the package checks; the fuzzers' clang.
test_packages=(dbus xvfb xfce4-panel xfce4-sntray-plugin xfconf xdotool imagemagick x11-utils
  prosody finch python3-slixmpp
  dpkg-dev lintian desktop-file-utils man-db
  clang-14 libclang-rt-14-dev libfuzzer-14-dev)
# scripts/bench.sh: /usr/bin/time for CPU time and peak memory.
packages+=(time procps)
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
