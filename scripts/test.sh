#!/bin/sh
# Installs what is missing, builds everything and runs the default test suite.
# Usage: scripts/test.sh [build-dir] [extra cmake arguments...]
set -eu
cd "$(dirname "$0")/.."
BUILD="${1:-build}"
[ $# -gt 0 ] && shift
./scripts/setup.sh
cmake -S . -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQV_WERROR=ON "$@"
cmake --build "$BUILD" -j"$(nproc)"
ctest --test-dir "$BUILD" -j"$(nproc)" --output-on-failure -LE 'soak|stress-long'
