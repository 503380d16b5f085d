#!/usr/bin/env bash
# Builds (Release) and runs the editor's start-up and open benchmarks of bench/editor/, then
# prints their medians as a table, each against the simplest Qt program doing the same: a
# QPlainTextEdit given the file through QFile::readAll, QStringDecoder and setPlainText.
#   start-up  the whole process, from its start to the first paint of the text view; on Xvfb
#             when it is installed, else on Qt's offscreen platform
#   window    in process: the main window made (and given the file) until its first paint
#   open      in process: a 10 MiB file opened into the shown window until its text is painted
# Usage: scripts/bench-editor.sh
# Environment: EDITOR_RUNS (runs per case, at least 5; default 15),
#              BENCH_BUILD_DIR (default build-bench)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
build_dir="${BENCH_BUILD_DIR:-build-bench}"
runs="${EDITOR_RUNS:-15}"
if ! [ "$runs" -ge 5 ] 2>/dev/null; then
    echo "bench-editor.sh: EDITOR_RUNS must be a number of at least 5" >&2
    exit 2
fi

scripts/install-deps.sh bench
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKORVEL_BUILD_BENCH=ON \
    -DKORVEL_BUILD_GUI=ON -DKORVEL_BUILD_TESTS=OFF >/dev/null
cmake --build "$build_dir" -j "$(nproc)" --target korvel_startup_bench korvel_editor_bench

work="$(mktemp -d)"
xvfb_pid=""
cleanup() {
    if [ -n "$xvfb_pid" ]; then
        kill "$xvfb_pid" 2>/dev/null || true
        wait "$xvfb_pid" 2>/dev/null || true
    fi
    rm -rf "$work"
}
trap cleanup EXIT

# A display of our own: no compositor, no other windows, the same for every run.
startup_env=(env -u WAYLAND_DISPLAY -u DISPLAY QT_QPA_PLATFORM=offscreen)
startup_screen="Qt's offscreen platform"
if command -v Xvfb >/dev/null; then
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$work/display" 2>"$work/xvfb.log" &
    xvfb_pid=$!
    for _ in $(seq 100); do
        [ -s "$work/display" ] && break
        sleep 0.1
    done
    if [ -s "$work/display" ]; then
        startup_env=(env -u WAYLAND_DISPLAY DISPLAY=":$(cat "$work/display")" QT_QPA_PLATFORM=xcb)
        startup_screen="Xvfb"
    else
        echo "Xvfb did not start; the start-up runs offscreen" >&2
    fi
fi

# Google Benchmark's own report goes to the JSON files; only the table below is printed.
gbench_args=(--benchmark_repetitions="$runs" --benchmark_report_aggregates_only=true
             --benchmark_format=json)
printf "\nStart-up and open of the editor against a bare QPlainTextEdit, %s runs each\n" "$runs"
"${startup_env[@]}" "$build_dir/bench/editor/korvel_startup_bench" "${gbench_args[@]}" \
    >"$work/startup.json"
# Warnings of the offscreen platform and of a session without a runtime folder say nothing
# about the editor.
QT_QPA_PLATFORM=offscreen "$build_dir/bench/editor/korvel_editor_bench" "${gbench_args[@]}" \
    >"$work/editor.json" 2> >(grep -v -e 'propagateSizeHints' -e 'XDG_RUNTIME_DIR' >&2)

python3 - "$startup_screen" "$work/startup.json" "$work/editor.json" <<'PYTHON'
import json
import sys

rows = [
    ("BM_StartUp/no_file", "start-up, no file"),
    ("BM_StartUp/shift_jis_1MiB", "start-up, 1 MiB Shift_JIS"),
    ("BM_Window/empty", "window, no file"),
    ("BM_Window/shift_jis_1MiB", "window, 1 MiB Shift_JIS"),
    ("BM_Open/shift_jis_10MiB", "open 10 MiB Shift_JIS"),
    ("BM_Open/utf8_10MiB", "open 10 MiB UTF-8"),
]
medians = {}
errors = {}
for path in sys.argv[2:]:
    with open(path) as file:
        report = json.load(file)
    for entry in report["benchmarks"]:
        name = entry["run_name"].split("/iterations:")[0]
        if entry.get("error_occurred"):
            errors.setdefault(name, entry["error_message"])
        elif entry.get("aggregate_name") == "median":
            medians[name] = entry

print(f"Medians; ratio is the median of the runs' editor/bare; start-up on {sys.argv[1]}")
print(f"{'case':<28}{'editor ms':>11}{'bare ms':>11}{'ratio':>8}")
for name, label in rows:
    entry = medians.get(name)
    if entry is None or name in errors:
        print(f"{label:<28}failed: {errors.get(name, 'no figures')}")
        continue
    print(f"{label:<28}{entry['real_time']:>11.1f}{entry['bare_ms']:>11.1f}{entry['vs_bare']:>8.2f}")
sys.exit(1 if errors or len(medians) < len(rows) else 0)
PYTHON
