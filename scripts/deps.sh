#!/usr/bin/env bash
# Installs the Debian packages Tidewell builds with, when any is missing: one `apt-get update`, then one
# `apt-get install -y` of just the missing ones. Does nothing when all are there. `deps.sh package` also installs
# what `make package` needs beyond a build: the tools that make the package, its manual pages, and check it.
# `deps.sh browsers` installs the real browsers that `make browser-test` and scripts/capture-browser-schemas.sh run,
# and what drives them.
set -euo pipefail

packages=(
    g++ cmake ninja-build pkg-config make
    libsqlite3-dev nlohmann-json3-dev libplist-dev libxcb1-dev libfmt-dev libcli11-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    qt6-base-dev qt6-svg-dev libqt6svg6 qt6-qpa-plugins fonts-dejavu-core xvfb
    clang-14 libfuzzer-14-dev
)
if [ "${1:-}" = package ]; then
    packages+=(dpkg-dev file help2man lintian appstream desktop-file-utils)
fi
if [ "${1:-}" = browsers ]; then
    packages+=(chromium firefox-esr python3 sqlite3)
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing missing packages: ${missing[*]}"
sudo=()
if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null 2>&1; then
        sudo=(sudo)
    else
        echo "These packages are missing and installing them needs root: ${missing[*]}" >&2
        exit 1
    fi
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update
"${sudo[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
