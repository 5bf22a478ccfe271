#!/usr/bin/env bash
# Installs the Debian packages the project builds and runs with, when any is
# missing; with --tests also what the tests use (real buses, panels, servers).
set -euo pipefail
packages=(g++ cmake make pkg-config libgtest-dev libgmock-dev libbenchmark-dev libicu-dev nlohmann-json3-dev tmux python3
  libcairo2-dev libpango1.0-dev libpoppler-glib-dev libgdk-pixbuf-2.0-dev fonts-dejavu-core
  libsdbus-c++-dev libsystemd-dev)
# dbus: private session buses; the rest: a real panel (xfce4-panel and its
# status-notifier plugin) under Xvfb, clicked with xdotool and photographed.
test_packages=(dbus xvfb xfce4-panel xfce4-sntray-plugin xfconf xdotool imagemagick x11-utils)
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
