#!/usr/bin/env bash
# Times korvelmacro on generated work: `check` on a macro of 100,000 lines, and `run` of a
# find-and-replace macro over 100 Shift_JIS files (CR LF, about 20 KB each). Medians of RUNS
# runs, wall-clock, with the time of `cat` over the same files beside them for scale.
# Usage: bench/macro.sh [KORVELMACRO]   (default build-bench/src/korvelmacro/korvelmacro)
# Environment: RUNS (default 5)
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
korvelmacro="${1:-$root/build-bench/src/korvelmacro/korvelmacro}"
runs="${RUNS:-5}"
[ -x "$korvelmacro" ] || { echo "macro.sh: no korvelmacro at $korvelmacro" >&2; exit 2; }

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

python3 - "$work" <<'PY'
import os, sys
work = sys.argv[1]
lines = ["VERSION 1.00", 'EXPLAIN 一行目\\n二行目']
kinds = ['TYPE "かな漢字 {i}"', "TYPE CTRL + SHIFT RIGHT", 'FIND /I "検索{i}"',
         'REPLACE /A "置換元{i}" "置換後"', "GOTO +{i}", "SELECT LINE", "COPY", "PASTE",
         "LOCK SHIFT", "UNLOCK SHIFT", "SLEEP 10", "# comment {i}", "TYPE \"a\\\\b\\\"c\\n\""]
for i in range(100_000 - len(lines)):
    lines.append(kinds[i % len(kinds)].format(i=i % 1000 + 1))
with open(os.path.join(work, "long.mcr"), "w", encoding="cp932", newline="\n") as f:
    f.write("\n".join(lines) + "\n")
with open(os.path.join(work, "tidy.mcr"), "w", encoding="cp932", newline="\n") as f:
    f.write('REPLACE /A "東京" "大阪"\nREPLACE /I /A "memo" "覚え書き"\nGOTO HOME\n'
            'TYPE "# 変換済み\\n"\nFIND "覚え書き"\nSAVE /A\n')
os.mkdir(os.path.join(work, "files"))
line = "東京の memo と Memo を書き直す。半角ｶﾅと全角カナ、記号①も混ぜる。\r\n"
for n in range(100):
    with open(os.path.join(work, "files", f"{n:03}.txt"), "wb") as f:
        f.write((line * 220).encode("cp932"))
PY

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
time_of() {
    local start end
    start=$(date +%s.%N)
    "$@" >/dev/null 2>&1 || true
    end=$(date +%s.%N)
    awk -v s="$start" -v e="$end" 'BEGIN { printf "%.3f\n", e - s }'
}

check=$(for _ in $(seq "$runs"); do time_of "$korvelmacro" check "$work/long.mcr"; done | median)
cat_long=$(for _ in $(seq "$runs"); do time_of cat "$work/long.mcr"; done | median)
echo "check, 100,000-line macro ($(stat -c %s "$work/long.mcr") bytes): ${check} s (cat ${cat_long} s)"

run=$(for _ in $(seq "$runs"); do
    rm -rf "$work/copy" && cp -r "$work/files" "$work/copy"
    time_of "$korvelmacro" run "$work/tidy.mcr" "$work"/copy/*.txt
done | median)
cat_files=$(for _ in $(seq "$runs"); do time_of cat "$work"/files/*.txt; done | median)
echo "run, find/replace macro over 100 files ($(du -sb "$work/files" | cut -f1) bytes): ${run} s" \
     "(cat ${cat_files} s)"
