#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer, UBSan) in build-fuzz/ and runs each for
# a bounded time, starting from the seeds in fuzz/seeds/<target>/.
# Usage: scripts/fuzz.sh [TARGET...]   (default: every target)
# Environment: FUZZ_SECONDS    seconds per target (default 60)
#              FUZZ_BUILD_DIR  build folder (default build-fuzz)
# Inputs that found new code paths are kept in <build folder>/corpus/<target>/ for the next run;
# an input that crashed or broke a property is written to <build folder>/findings/<target>/, and
# the script then exits with status 1.
set -euo pipefail
cd "$(dirname "$0")/.."

targets=(detection_fuzzer shiftjis_utf8_fuzzer jis_euc_fuzzer document_fuzzer shortcut_fuzzer
         settings_fuzzer handover_fuzzer macro_fuzzer)
[ $# -gt 0 ] && targets=("$@")
seconds="${FUZZ_SECONDS:-60}"
build_dir="${FUZZ_BUILD_DIR:-build-fuzz}"

scripts/install-deps.sh fuzz
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVEL_BUILD_FUZZ=ON -DKORVEL_BUILD_GUI=OFF \
    -DKORVEL_BUILD_TESTS=OFF >/dev/null
cmake --build "$build_dir" -j "$(nproc)" --target "${targets[@]}"

export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
failed=()
for target in "${targets[@]}"; do
    corpus="$build_dir/corpus/$target"
    findings="$build_dir/findings/$target"
    mkdir -p "$corpus" "$findings"
    echo "== $target, ${seconds} s"
    # The first folder receives new inputs; the seeds stay as committed.
    if ! "$build_dir/fuzz/$target" -max_total_time="$seconds" -max_len=4096 \
        -print_final_stats=1 -artifact_prefix="$findings/" "$corpus" "fuzz/seeds/$target"; then
        failed+=("$target")
    fi
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "findings in: ${failed[*]} (inputs under $build_dir/findings/)" >&2
    exit 1
fi
echo "no findings"
