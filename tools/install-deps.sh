#!/usr/bin/env bash
# Installs the Debian packages the build needs that are not installed yet.
# Usage: tools/install-deps.sh [extra-package...]
set -euo pipefail

# desktop-file-utils, appstream, libxml2-utils and groff-base validate the installed desktop files in
# the install test; strace lets a test see that a new file is synced before it replaces a script;
# libreoffice-calc-nogui takes the table of a mod through a real spreadsheet program in a test.
packages=(cmake make g++ qt6-base-dev libgl-dev libgtest-dev libgmock-dev libbenchmark-dev liblua5.4-dev fonts-dejavu-core locales-all
          desktop-file-utils appstream libxml2-utils groff-base strace libreoffice-calc-nogui "$@")

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

# A freshly booted machine often runs its own package updates: wait for their lock (up to
# LOCK_TIMEOUT seconds) instead of failing at once.
lock=(-o "DPkg::Lock::Timeout=${LOCK_TIMEOUT:-600}")
echo "Installing missing packages: ${missing[*]}"
"${sudo[@]}" apt-get "${lock[@]}" update -qq
DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get "${lock[@]}" install -y -qq --no-install-recommends "${missing[@]}"
