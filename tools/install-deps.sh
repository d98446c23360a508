#!/usr/bin/env bash
# Installs the Debian packages the build needs that are not installed yet.
# Usage: tools/install-deps.sh [extra-package...]
set -euo pipefail

packages=(cmake make g++ qt6-base-dev libgl-dev libgtest-dev libgmock-dev libbenchmark-dev liblua5.4-dev fonts-dejavu-core locales-all "$@")

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null 2>&1; then
  echo "Vantorel needs these packages, and this system has no apt-get to install them: ${missing[*]}" >&2
  echo "Install them (or your distribution's equivalents) and run the command again." >&2
  exit 1
fi

sudo=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null 2>&1; then
    echo "Installing ${missing[*]} needs root, and sudo is not available. Run as root: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  sudo=(sudo)
fi

echo "Installing missing packages: ${missing[*]}"
"${sudo[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
