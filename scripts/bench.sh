#!/usr/bin/env bash
# Builds the benchmarks (Release) in build-bench/, builds the corpus when it is missing, then
# runs the Google Benchmark programs (the encoding engine on the corpus; the file list on a
# folder of 10,000 entries against ls -l; replace all against QString::replace) and
# bench/compare.sh (korvelconv against iconv, uconv, nkf) and bench/macro.sh (korvelmacro check
# and run on generated macros and files).
# Usage: scripts/bench.sh [--quick] [korvel_bench arguments, e.g. --benchmark_filter=Detect]
#   --quick  8 MiB slices and short runs for the Google Benchmark programs, 3 runs per tool in
#            compare.sh
# Environment: KORVEL_CORPUS (default <repo>/corpus), KORVEL_BENCH_SLICE, RUNS, CASES,
#              BENCH_BUILD_DIR (default build-bench)
# The corpus (about 520 MB) is made by bench/make-corpus.py from the Debian packages that
# "scripts/install-deps.sh bench" installs.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
export KORVEL_CORPUS="${KORVEL_CORPUS:-$root/corpus}"
build_dir="${BENCH_BUILD_DIR:-build-bench}"

bench_args=()
if [ "${1:-}" = "--quick" ]; then
    shift
    export KORVEL_BENCH_SLICE="${KORVEL_BENCH_SLICE:-8M}"
    export RUNS="${RUNS:-3}"
    bench_args+=(--benchmark_min_time=0.1)
fi

scripts/install-deps.sh bench
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKORVEL_BUILD_BENCH=ON \
    -DKORVEL_BUILD_GUI=ON -DKORVEL_BUILD_TESTS=OFF >/dev/null
cmake --build "$build_dir" -j "$(nproc)" --target korvel_bench korvel_listing_bench korvel_search_bench korvelconv \
    korvel_floor korvelmacro

# make-corpus.py writes stats.json last, so its presence means a finished corpus.
if [ ! -f "$KORVEL_CORPUS/stats.json" ]; then
    echo "Building the corpus in $KORVEL_CORPUS"
    python3 bench/make-corpus.py "$KORVEL_CORPUS"
fi

"$build_dir/bench/korvel_bench" "${bench_args[@]}" "$@"
echo
"$build_dir/bench/korvel_listing_bench" "${bench_args[@]}"
echo
QT_QPA_PLATFORM=offscreen "$build_dir/bench/korvel_search_bench" "${bench_args[@]}"
echo
bench/compare.sh "$build_dir/src/korvelconv/korvelconv"
echo
bench/macro.sh "$build_dir/src/korvelmacro/korvelmacro"
BENCH_BUILD_DIR="$build_dir" scripts/bench-editor.sh # the editor against a bare Qt program
