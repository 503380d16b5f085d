#!/usr/bin/env bash
# Builds KorvelEdit with its tests and runs every test headless.
# Usage: scripts/test.sh [--sanitize]   (--sanitize: AddressSanitizer + UBSan, in build-asan/)
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=build
options=()
if [ "${1:-}" = "--sanitize" ]; then
    build_dir=build-asan
    options+=(-DKORVEL_SANITIZE=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo)
fi

scripts/install-deps.sh test
cmake -S . -B "$build_dir" -G Ninja -DKORVEL_BUILD_TESTS=ON "${options[@]}" >/dev/null
cmake --build "$build_dir" -j "$(nproc)"

export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan-suppressions.txt:print_suppressions=0"
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)"
