#!/bin/sh
# Checks the installed SDK the way a user meets it: installs a built tree into a fresh prefix,
# builds the examples against it with CMake (find_package(QvApi)) and one with pkg-config, runs
# them on the virtual cameras, and runs a scripted qvcam session with the installed tool.
# Usage: scripts/check-install.sh [build-dir]   (the build must be complete, e.g. after test.sh)
set -eu
cd "$(dirname "$0")/.."
SOURCE="$PWD"
BUILD="${1:-build}"
WORK="$(mktemp -d "${TMPDIR:-/tmp}/qvapi-install-XXXXXX")"
trap 'rm -rf "$WORK"' EXIT
PREFIX="$WORK/prefix"
passed=0
failed=0

check() { # check NAME COMMAND...: runs the command, counts and reports the result
    name="$1"
    shift
    if "$@" >"$WORK/last.log" 2>&1; then
        passed=$((passed + 1))
        echo "ok    $name"
    else
        failed=$((failed + 1))
        echo "FAIL  $name"
        sed 's/^/      /' "$WORK/last.log" | tail -20
    fi
}

cmake --install "$BUILD" --prefix "$PREFIX" >/dev/null
export GENICAM_GENTL64_PATH="$PREFIX/lib/qvapi/gentl"
QVCAM="$PREFIX/bin/qvcam"

# The installed tree: public headers only, producer beside the libraries, package files.
check "producer installed under lib/qvapi/gentl" test -f "$GENICAM_GENTL64_PATH/libqvgentl.cti"
check "no internal headers installed" sh -c "! find '$PREFIX/include' -name '*Inside.h' -o -name 'CQv*.h' | grep -q ."
check "CMake package installed" test -f "$PREFIX/lib/cmake/QvApi/QvApiConfig.cmake"
check "pkg-config file installed" test -f "$PREFIX/lib/pkgconfig/qvapi.pc"

# Examples against the installed package.
check "examples configure with find_package(QvApi)" \
    cmake -S "$SOURCE/examples" -B "$WORK/examples" -G Ninja -DCMAKE_PREFIX_PATH="$PREFIX" -DCMAKE_BUILD_TYPE=Release
check "examples build" cmake --build "$WORK/examples"
mkdir -p "$WORK/run"
for example in EnumerateDevices GrabPolling GrabCallback MultiCamera ChunkData EventsAndDeviceLoss ImageBuffer \
    SaveLoadFeatures; do
    check "example $example runs" sh -c "cd '$WORK/run' && '$WORK/examples/$example'"
done
mkdir -p "$WORK/pkgconfig"
check "GrabPolling builds with pkg-config" env PKG_CONFIG_PATH="$PREFIX/lib/pkgconfig" \
    make -C "$WORK/pkgconfig" -f "$SOURCE/examples/Makefile" LDFLAGS="-Wl,-rpath,$PREFIX/lib"
check "GrabPolling (pkg-config) runs" "$WORK/pkgconfig/GrabPolling"

# A qvcam session with the installed tool.
check "qvcam list" sh -c "'$QVCAM' list | grep -q 'QVU3V0000'"
check "qvcam info" sh -c "'$QVCAM' info QVGEV0000 | grep -q 'ExposureTime'"
check "qvcam get" sh -c "test \"\$('$QVCAM' get 2 Width)\" = 1280"
check "qvcam set" sh -c "test \"\$('$QVCAM' set Width 640)\" = 'Width = 640'"
check "qvcam grab to PNG" sh -c "'$QVCAM' grab --count 3 --out '$WORK/frames' --set PixelFormat=BayerRG8 \
    --set TestPattern=ColorBar && test \"\$(head -c 4 '$WORK/frames/QVU3V0000-0003.png' | tail -c 3)\" = PNG"
check "qvcam features save" "$QVCAM" features save "$WORK/settings.txt"
check "qvcam features load" "$QVCAM" features load "$WORK/settings.txt"
check "qvcam xml" sh -c "'$QVCAM' xml --module local '$WORK/local.xml' && grep -q '<RegisterDescription' '$WORK/local.xml'"
check "qvcam genicam-dump" sh -c "'$QVCAM' genicam-dump '$WORK/local.xml' | grep -q '\"name\":\"DeviceID\"'"
check "qvcam unknown feature exits 6" sh -c "'$QVCAM' get Nope; test \$? -eq 6"

echo "check-install: $passed passed, $failed failed"
test "$failed" -eq 0
