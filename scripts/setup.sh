#!/usr/bin/env bash
# Installs the Debian packages the project builds with, when any is missing.
set -euo pipefail
packages=(g++ cmake make pkg-config libgtest-dev libgmock-dev libbenchmark-dev libicu-dev nlohmann-json3-dev tmux python3
  libcairo2-dev libpango1.0-dev libpoppler-glib-dev libgdk-pixbuf-2.0-dev fonts-dejavu-core)
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
