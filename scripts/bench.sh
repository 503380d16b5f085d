#!/usr/bin/env bash
# Builds the benchmarks (Release) in build-bench/, builds the corpus when it is missing, then
# runs the Google Benchmark program and bench/compare.sh (korvelconv against iconv, uconv, nkf).
# Usage: scripts/bench.sh [--quick] [korvel_bench arguments, e.g. --benchmark_filter=Detect]
#   --quick  8 MiB slices and short runs for the Google Benchmark program, 3 runs per tool in
#            compare.sh
# Environment: KORVEL_CORPUS (default <repo>/corpus), KORVEL_BENCH_SLICE, RUNS, CASES
# The corpus (about 520 MB) is made by bench/make-corpus.py from the Debian packages that
# "scripts/install-deps.sh bench" installs.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
export KORVEL_CORPUS="${KORVEL_CORPUS:-$root/corpus}"

bench_args=()
if [ "${1:-}" = "--quick" ]; then
    shift
    export KORVEL_BENCH_SLICE="${KORVEL_BENCH_SLICE:-8M}"
    export RUNS="${RUNS:-3}"
    bench_args+=(--benchmark_min_time=0.1)
fi

scripts/install-deps.sh bench
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DKORVEL_BUILD_BENCH=ON \
    -DKORVEL_BUILD_GUI=OFF -DKORVEL_BUILD_TESTS=OFF >/dev/null
cmake --build build-bench -j "$(nproc)" --target korvel_bench korvelconv

# make-corpus.py writes stats.json last, so its presence means a finished corpus.
if [ ! -f "$KORVEL_CORPUS/stats.json" ]; then
    echo "Building the corpus in $KORVEL_CORPUS"
    python3 bench/make-corpus.py "$KORVEL_CORPUS"
fi

build-bench/bench/korvel_bench "${bench_args[@]}" "$@"
echo
bench/compare.sh build-bench/src/korvelconv/korvelconv
