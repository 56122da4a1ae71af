#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT
#
# Unscrambling and scrambling beside cp, on the same file in the same run.
# usage: scramble.sh BUILD_FOLDER [WORK_FOLDER [MEBIBYTES]]
# Prints the best of five runs each, the ratio (bar: 1.1), and the peak memory (bar: 16 MiB).
set -eu
driver=$1/Benchmarks/zpk_scramble_driver
work=$(mktemp -d "${2:-${TMPDIR:-/tmp}}/zpk-scramble-XXXXXX")
size=${3:-1024}
trap 'rm -rf "$work"' EXIT

head -c "$((size * 1024 * 1024))" /dev/urandom > "$work/plain"
"$driver" fake "$work/plain" "$work/scrambled" > /dev/null

# Every run starts with the source in the page cache and nothing left to be written.
settle() {
    rm -f "$work/out"
    sync -f "$work"
    cat "$work/plain" "$work/scrambled" > /dev/null
}

now() { date +%s.%N; }

: > "$work/times"
for _ in 1 2 3 4 5; do
    settle
    start=$(now)
    cp "$work/scrambled" "$work/out"
    echo "cp $(echo "$(now) - $start" | bc) 0" >> "$work/times"
    settle
    start=$(now)
    memory=$("$driver" unfake "$work/scrambled" "$work/out" | cut -d ' ' -f 2)
    echo "unfake $(echo "$(now) - $start" | bc) $memory" >> "$work/times"
    settle
    start=$(now)
    memory=$("$driver" fake "$work/plain" "$work/out" | cut -d ' ' -f 2)
    echo "fake $(echo "$(now) - $start" | bc) $memory" >> "$work/times"
done
"$driver" unfake "$work/scrambled" "$work/out" > /dev/null
cmp "$work/plain" "$work/out"

awk -v size="$size" '
    { if (!($1 in best) || $2 < best[$1]) best[$1] = $2; if ($3 > peak[$1]) peak[$1] = $3 }
    END {
        printf "cp      %5d MiB  %.3f s\n", size, best["cp"]
        for (i = 1; i <= 2; ++i) {
            name = i == 1 ? "unfake" : "fake"
            printf "%-7s %5d MiB  %.3f s  ratio to cp %.2f  peak memory %.1f MiB\n",
                name, size, best[name], best[name] / best["cp"], peak[name] / 1024
        }
    }' "$work/times"
