#!/usr/bin/env bash
# Builds KorvelEdit and starts it, optionally with a file.
# Usage: scripts/run.sh [FILE]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
file=()
[ $# -gt 0 ] && file=("$(realpath -m "$1")")

"$root/scripts/install-deps.sh" build
cmake -S "$root" -B "$root/build" -G Ninja -DKORVEL_BUILD_TESTS=OFF >/dev/null
cmake --build "$root/build" -j "$(nproc)" --target korveledit
exec "$root/build/src/shell/korveledit" "${file[@]}"
