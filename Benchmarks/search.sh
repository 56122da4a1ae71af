#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT
#
# Lists and matches 100 000 files in memory beside `find -type f`.
# Usage: search.sh DRIVER [ROUNDS]
set -eu
driver=$1
rounds=${2:-15}
work=$(mktemp -d /dev/shm/zpk-bench-XXXXXX)
trap 'rm -rf "$work" "$work".*' EXIT INT TERM

folder=0
while [ $folder -lt 1000 ]; do
    mkdir "$work/folder$folder"
    (cd "$work/folder$folder" && seq -f 'file%.0f.txt' 100 | xargs touch)
    folder=$((folder + 1))
done

# Tenths of milliseconds of one run.
tenths() {
    start=$(date +%s%N)
    "$@" >/dev/null
    end=$(date +%s%N)
    echo $(((end - start) / 100000))
}

round=0
while [ $round -lt "$rounds" ]; do
    tenths find "$work" -type f >>"$work.find"
    tenths "$driver" list "$work" >>"$work.ours"
    round=$((round + 1))
done

# statistic NAME LINE: that line of what was measured, from the least to the most.
statistic() {
    ours=$(sort -n "$work.ours" | sed -n "$2p")
    peer=$(sort -n "$work.find" | sed -n "$2p")
    awk -v ours="$ours" -v peer="$peer" -v name="$1" 'BEGIN {
        printf "listing 100 000 files, %s: ours %.1f ms, find -type f %.1f ms, ratio %.2f, bar at most 1.0\n",
            name, ours / 10, peer / 10, ours / peer
    }'
}

statistic least 1
statistic median $((rounds / 2 + 1))
"$driver" match "$work" '*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b'
