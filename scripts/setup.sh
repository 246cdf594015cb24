#!/bin/sh
# Installs the Debian packages needed to build, test and benchmark the SDK.
# Safe to run repeatedly: only missing packages are installed.
set -eu

# libusb-1.0-0-dev: aravis-0.8.pc lists it as a private requirement, so pkg-config fails without it.
PACKAGES="g++ cmake ninja-build pkg-config make
libpugixml-dev libzip-dev zlib1g-dev
libgtest-dev libgmock-dev libbenchmark-dev
libcli11-dev libstb-dev
clang libclang-rt-14-dev
libaravis-dev libusb-1.0-0-dev doxygen python3 zip unzip"

missing=""
for p in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
done

if [ -n "$missing" ]; then
    echo "setup: installing$missing"
    SUDO=""
    if [ "$(id -u)" != "0" ]; then SUDO="sudo"; fi
    export DEBIAN_FRONTEND=noninteractive
    $SUDO apt-get update -qq
    # shellcheck disable=SC2086
    $SUDO apt-get install -y -qq --no-install-recommends $missing >/dev/null
fi
