#!/usr/bin/env bash
# Installs the packages that building and testing need on Debian 12; does nothing if they are installed.
set -euo pipefail
packages=(g++ cmake ninja-build make pkg-config qtbase5-dev libgtest-dev libgmock-dev libbenchmark-dev
    zlib1g-dev libssl-dev libfmt-dev nlohmann-json3-dev libcli11-dev tcl8.6-dev robin-map-dev abigail-tools
    clang-format)

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "setup: no apt-get here, so nothing is installed; needed are: ${packages[*]}" >&2
    exit 0
fi

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "setup: installing ${missing[*]}"
as_root=(env)
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup: neither root nor sudo; as root, run: apt-get install ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo env)
fi
"${as_root[@]}" apt-get update
"${as_root[@]}" DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
