#!/usr/bin/env bash
# Prints the test code (tests/, fuzz/) as a share of all C++ code: product (src/) and tests, counting
# lines that are neither blank nor comment-only, and leaving out the generated CP932 table.
# Usage: scripts/test-share.sh [--max PERCENT]   (exits 1 when the share is above PERCENT)
set -euo pipefail
cd "$(dirname "$0")/.."

max=""
if [ "${1:-}" = "--max" ]; then
    max="$2"
fi

count() {
    git ls-files -- "$@" |
        grep -E '\.(cpp|h|hpp|cc)$' |
        grep -v '^src/codec/Cp932TableData\.cpp$' |
        xargs -r cat |
        # Drops /* */ blocks, // lines and blank lines; code sharing a line with a comment stays.
        sed -e ':a' -e '/\/\*/{/\*\//!{N;ba' -e '}}' -e 's@/\*.*\*/@@g' |
        grep -Ev '^[[:space:]]*(//.*)?$' |
        wc -l
}

tests=$(count tests fuzz)
product=$(count src)
total=$((tests + product))
share=$(awk -v t="$tests" -v a="$total" 'BEGIN { printf "%.1f", 100 * t / a }')
echo "test lines: $tests, product lines: $product, test share: $share%"
if [ -n "$max" ] && awk -v s="$share" -v m="$max" 'BEGIN { exit !(s > m) }'; then
    echo "test-share.sh: the tests are more than $max% of the code" >&2
    exit 1
fi
