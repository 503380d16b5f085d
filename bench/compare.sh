#!/usr/bin/env bash
# Times korvelconv against glibc iconv, ICU uconv and nkf on the benchmark corpus.
# Every tool runs as a whole process on the same file, RUNS times, writing to /dev/null; the
# table shows medians of the wall-clock time and korvelconv's peak memory. One untimed run of
# each tool first warms the page cache and checks that all tools wrote the same bytes (a mark at
# the start of korvelconv's output aside). In the same rounds run the floors: cat, and
# korvel_floor, which reads (or maps) the file and writes an output of korvelconv's size made
# by copying, so that the last table shows what the machine costs before any conversion.
#
# Usage: bench/compare.sh [KORVELCONV]   (default build-bench/src/korvelconv/korvelconv)
# Environment: KORVEL_CORPUS   corpus folder (default <repo>/corpus; scripts/bench.sh builds it)
#              RUNS            timed runs per tool and case (default 5)
#              CASES           extended regex; only cases whose name matches run (e.g. 'decode')
#              FLOOR           korvel_floor (default: bench/korvel_floor of korvelconv's build)
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
corpus="${KORVEL_CORPUS:-$root/corpus}"
runs="${RUNS:-5}"
only="${CASES:-.}"
korvelconv="${1:-$root/build-bench/src/korvelconv/korvelconv}"
floor="${FLOOR:-$(dirname "$korvelconv")/../../bench/korvel_floor}"

[ -x "$korvelconv" ] || { echo "compare.sh: no korvelconv at $korvelconv" >&2; exit 2; }
[ -x /usr/bin/time ] || { echo "compare.sh: /usr/bin/time is missing (Debian: time)" >&2; exit 2; }

# Decode and encode must beat the fastest other tool by this factor, detection nkf --guess.
convert_target=3
detect_target=20

others=(iconv uconv nkf)
declare -A available
for tool in "${others[@]}"; do
    if command -v "$tool" >/dev/null; then
        available[$tool]=1
    else
        echo "note: $tool is not installed; its columns stay empty" >&2
    fi
done
[ -x "$floor" ] || echo "note: no korvel_floor at $floor; the floor table stays empty" >&2

# Outputs of the warm-up runs are compared on a tmpfs when there is one.
scratch_parent=/dev/shm
[ -d "$scratch_parent" ] && [ -w "$scratch_parent" ] || scratch_parent="${TMPDIR:-/tmp}"
scratch="$(mktemp -d "$scratch_parent/korvel-compare.XXXXXX")"
trap 'rm -rf "$scratch"' EXIT

# name | korvelconv's file | the other tools' file | korvelconv | iconv | uconv | nkf
# "-" means the tool has no part in the case. The encode cases give korvelconv the UTF-16 file
# with its mark, as the editor saves it; the others would carry the mark over as a character.
# korvelconv reads utf8.txt as utf8n: its "utf8" is the form with a mark, which it skips
# untested. nkf gets -x -m0 so that it skips katakana widening and MIME decoding: the least
# work it can do.
cases=(
    "decode sjis|sjis.txt|sjis.txt|--from sjis --to unicode|-f CP932 -t UTF-16LE|-f cp932 -t UTF-16LE|-x -m0 -S -w16L0"
    "decode euc|euc.txt|euc.txt|--from euc --to unicode|-f EUC-JP -t UTF-16LE|-f EUC-JP -t UTF-16LE|-x -m0 -E -w16L0"
    "decode jis|jis.txt|jis.txt|--from jis --to unicode|-f ISO-2022-JP -t UTF-16LE|-f ISO-2022-JP -t UTF-16LE|-x -m0 -J -w16L0"
    "decode utf8|utf8.txt|utf8.txt|--from utf8n --to unicode|-f UTF-8 -t UTF-16LE|-f UTF-8 -t UTF-16LE|-x -m0 -W -w16L0"
    "encode sjis|utf16le-bom.txt|utf16le.txt|--from unicode --to sjis|-f UTF-16LE -t CP932|-f UTF-16LE -t cp932|-x -m0 -W16L -s"
    "encode euc|utf16le-bom.txt|utf16le.txt|--from unicode --to euc|-f UTF-16LE -t EUC-JP|-f UTF-16LE -t EUC-JP|-x -m0 -W16L -e"
    "encode jis|utf16le-bom.txt|utf16le.txt|--from unicode --to jis|-f UTF-16LE -t ISO-2022-JP|-f UTF-16LE -t ISO-2022-JP|-x -m0 -W16L -j"
    "encode utf8|utf16le-bom.txt|utf16le.txt|--from unicode --to utf8n|-f UTF-16LE -t UTF-8|-f UTF-16LE -t UTF-8|-x -m0 -W16L -w80"
)
for file in ascii sjis euc jis utf8 utf8bom utf16le-bom; do
    cases+=("detect $file|$file.txt|$file.txt|--detect|-|-|--guess")
done

# Runs a command once; sets run_ns (wall clock) and run_kb (max RSS). Returns non-zero, with
# the tool's message in $scratch/err, when the command fails.
run_once() {
    local start end
    start=$(date +%s%N)
    /usr/bin/time -f %M -o "$scratch/rss" "$@" >/dev/null 2>"$scratch/err" || return 1
    end=$(date +%s%N)
    run_ns=$((end - start))
    run_kb=$(tail -n 1 "$scratch/rss")
}

median() {
    printf '%s\n' "$@" | sort -n |
        awk '{ t[NR] = $1 } END { print (NR % 2) ? t[(NR + 1) / 2] : (t[NR / 2] + t[NR / 2 + 1]) / 2 }'
}

# A command kept as one string, its words separated by the unit separator.
joined() {
    local IFS=$'\x1f'
    echo "$*"
}

# Bytes of korvelconv's output that come before the text: a UTF-16 or UTF-8 mark.
mark_length() {
    case "$(head -c 3 "$1" | od -An -tx1 | tr -d ' \n')" in
    efbbbf) echo 3 ;;
    fffe*) echo 2 ;;
    *) echo 0 ;;
    esac
}

seconds() { awk -v ns="$1" 'BEGIN { printf "%.3f", ns / 1e9 }'; }
mib_per_s() { awk -v ns="$1" -v bytes="$2" 'BEGIN { printf "%.0f", bytes / 1048576 / (ns / 1e9) }'; }
mib() { awk -v bytes="$1" 'BEGIN { printf "%.1f", bytes / 1048576 }'; }

echo "corpus: $corpus, $runs timed runs per tool, medians; MiB/s of input"
echo "korvelconv: $korvelconv"
echo "load average at start: $(cut -d ' ' -f 1-3 /proc/loadavg) on $(nproc) cores"
[ -n "${available[iconv]:-}" ] && echo "iconv: $(iconv --version | head -n 1)"
[ -n "${available[uconv]:-}" ] && echo "uconv: $(uconv --version | head -n 1)"
[ -n "${available[nkf]:-}" ] && echo "nkf: $(nkf --version | head -n 1)"
echo

speed_rows=()
memory_rows=()
floor_rows=()
notes=()
failed_targets=0
for entry in "${cases[@]}"; do
    IFS='|' read -r name own_file other_file own_args iconv_args uconv_args nkf_args <<<"$entry"
    [[ $name =~ $only ]] || continue
    own_path="$corpus/$own_file"
    other_path="$corpus/$other_file"
    for path in "$own_path" "$other_path"; do
        [ -r "$path" ] || { echo "compare.sh: missing $path (scripts/bench.sh builds it)" >&2; exit 2; }
    done
    echo "running: $name" >&2
    kind=${name%% *}

    own_in=$(stat -c %s "$own_path")
    other_in=$(stat -c %s "$other_path")
    read -ra args <<<"$own_args"
    tools=(korvelconv)
    commands=("$(joined "$korvelconv" "${args[@]}" "$own_path")")
    for tool in "${others[@]}"; do
        case $tool in
        iconv) tool_args=$iconv_args ;;
        uconv) tool_args=$uconv_args ;;
        nkf) tool_args=$nkf_args ;;
        esac
        if [ "$tool_args" = "-" ] || [ -z "${available[$tool]:-}" ]; then
            continue
        fi
        read -ra args <<<"$tool_args"
        tools+=("$tool")
        commands+=("$(joined "$tool" "${args[@]}" "$other_path")")
    done

    # Warm-up: fills the page cache and keeps korvelconv's output, which the others must match.
    declare -A failed=()
    for k in "${!tools[@]}"; do
        tool=${tools[k]}
        IFS=$'\x1f' read -ra command <<<"${commands[k]}"
        if ! "${command[@]}" >"$scratch/$tool.out" 2>"$scratch/err"; then
            [ "$tool" = korvelconv ] &&
                { echo "compare.sh: korvelconv failed on $name: $(head -n 1 "$scratch/err")" >&2; exit 1; }
            notes+=("$name: $tool failed: $(head -n 1 "$scratch/err")")
            failed[$tool]=1
            continue
        fi
        if [ "$tool" = korvelconv ]; then
            own_skip=$(mark_length "$scratch/korvelconv.out")
            # The floors write as many bytes as korvelconv did; they join the timed rounds.
            tools+=(cat)
            commands+=("$(joined cat "$own_path")")
            if [ -x "$floor" ]; then
                own_out=$(stat -c %s "$scratch/korvelconv.out")
                tools+=(floor-read floor-map)
                commands+=("$(joined "$floor" read "$own_path" "$own_out")"
                    "$(joined "$floor" map "$own_path" "$own_out")")
            fi
            continue
        fi
        if [ "$kind" != detect ]; then
            cmp -s -i "$own_skip:0" "$scratch/korvelconv.out" "$scratch/$tool.out" ||
                notes+=("$name: korvelconv's output differs from $tool's")
        fi
        rm -f "$scratch/$tool.out"
    done

    # Timed rounds run every tool once in turn, so that a change in the load of a shared
    # machine falls on all of them alike.
    declare -A times=() peak_kb=()
    for ((run = 0; run < runs; run++)); do
        for k in "${!tools[@]}"; do
            tool=${tools[k]}
            [ -z "${failed[$tool]:-}" ] || continue
            IFS=$'\x1f' read -ra command <<<"${commands[k]}"
            if ! run_once "${command[@]}"; then
                [ "$tool" = korvelconv ] && { echo "compare.sh: korvelconv failed on $name" >&2; exit 1; }
                notes+=("$name: $tool failed: $(head -n 1 "$scratch/err")")
                failed[$tool]=1
                continue
            fi
            times[$tool]+="$run_ns "
            ((run_kb > ${peak_kb[$tool]:-0})) && peak_kb[$tool]=$run_kb
        done
    done

    read -ra list <<<"${times[korvelconv]}"
    own_ns=$(median "${list[@]}")
    row=$(printf '%-18s %7s s %6s' "$name" "$(seconds "$own_ns")" "$(mib_per_s "$own_ns" "$own_in")")
    best_tool=""
    best_ns=0
    for tool in "${others[@]}"; do
        if [ -n "${failed[$tool]:-}" ]; then
            row+=$(printf '   %7s   %6s' failed -)
            continue
        fi
        if [ -z "${times[$tool]:-}" ]; then
            row+=$(printf '   %7s   %6s' - -)
            continue
        fi
        read -ra list <<<"${times[$tool]}"
        tool_ns=$(median "${list[@]}")
        row+=$(printf '   %7s s %6s' "$(seconds "$tool_ns")" "$(mib_per_s "$tool_ns" "$other_in")")
        if [ -z "$best_tool" ] || ((tool_ns < best_ns)); then
            best_tool=$tool
            best_ns=$tool_ns
        fi
    done

    target=$convert_target
    [ "$kind" = detect ] && target=$detect_target
    if [ -n "$best_tool" ]; then
        ratio=$(awk -v a="$best_ns" -v b="$own_ns" 'BEGIN { printf "%.1f", a / b }')
        verdict=$(awk -v r="$ratio" -v t="$target" 'BEGIN { print (r >= t) ? "met" : "NOT met" }')
        [ "$verdict" = met ] || failed_targets=$((failed_targets + 1))
        row+=$(printf '   %-7s %6sx   >=%sx %s' "$best_tool" "$ratio" "$target" "$verdict")
    else
        row+=$(printf '   %-7s %7s   >=%sx %s' "-" "-" "$target" "not measured")
    fi
    speed_rows+=("$row")

    floor_row=$(printf '%-18s %7s s' "$name" "$(seconds "$own_ns")")
    for tool in cat floor-read floor-map; do
        if [ -z "${times[$tool]:-}" ]; then
            floor_row+=$(printf '   %7s  %5s' - -)
            continue
        fi
        read -ra list <<<"${times[$tool]}"
        tool_ns=$(median "${list[@]}")
        floor_row+=$(printf '   %7s s %5s' "$(seconds "$tool_ns")" \
            "$(awk -v a="$tool_ns" -v b="$own_ns" 'BEGIN { printf "%.0f%%", 100 * a / b }')")
    done
    floor_rows+=("$floor_row")

    peak_bytes=$((peak_kb[korvelconv] * 1024))
    if [ "$kind" = detect ]; then
        # Detection makes neither text nor output: its peak is shown for what it is.
        memory_rows+=("$(printf '%-18s %8s %8s %8s %8s %8s   %s' "$name" "$(mib "$own_in")" \
            - - - "$(mib "$peak_bytes")" "(no target)")")
        continue
    fi
    # The memory a conversion may need: the file, the editor's UTF-16 text and the output.
    out_bytes=$(stat -c %s "$scratch/korvelconv.out")
    if [ "$kind" = decode ]; then
        text_bytes=$((out_bytes - own_skip))
    else
        text_bytes=$((own_in - $(mark_length "$own_path")))
    fi
    limit=$((own_in + text_bytes + out_bytes))
    verdict="met"
    ((peak_bytes <= limit)) || { verdict="NOT met"; failed_targets=$((failed_targets + 1)); }
    memory_rows+=("$(printf '%-18s %8s %8s %8s %8s %8s   %s' "$name" "$(mib "$own_in")" \
        "$(mib "$text_bytes")" "$(mib "$out_bytes")" "$(mib "$limit")" "$(mib "$peak_bytes")" \
        "$verdict")")
done

printf '%-18s %16s   %16s   %16s   %16s   %-7s %7s   %s\n' case korvelconv iconv uconv nkf \
    fastest speed-up target
printf '%-18s %16s   %16s   %16s   %16s   %-7s %7s\n' "" "s     MiB/s" "s     MiB/s" \
    "s     MiB/s" "s     MiB/s" other "vs it"
printf '%s\n' "${speed_rows[@]}"
echo
echo "korvelconv peak memory (MiB; target: max RSS <= input + UTF-16 text + output)"
printf '%-18s %8s %8s %8s %8s %8s   %s\n' case input UTF-16 output limit "max RSS" target
printf '%s\n' "${memory_rows[@]}"
echo
echo "floors, timed in the same rounds (share: floor time / korvelconv time; floor-read and"
echo "floor-map take the file into memory and write korvelconv's output size from it by copying)"
printf '%-18s %9s   %15s   %15s   %15s\n' case korvelconv cat floor-read floor-map
printf '%-18s %9s   %15s   %15s   %15s\n' "" s "s     share" "s     share" "s     share"
printf '%s\n' "${floor_rows[@]}"
if [ ${#notes[@]} -gt 0 ]; then
    echo
    printf 'note: %s\n' "${notes[@]}"
fi
echo
echo "targets not met: $failed_targets"
