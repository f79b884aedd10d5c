#!/usr/bin/env bash
# Installs the Debian packages the program needs to build, run and test, when any is missing.
set -euo pipefail
packages=(build-essential cmake pkg-config qt6-base-dev libzip-dev libgtest-dev libgmock-dev
          libbenchmark-dev xvfb xauth)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  if [ "$(id -u)" -eq 0 ]; then sudo=""; else sudo="sudo"; fi
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
fi
