#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT
#
# Lists and matches 100 000 files in memory beside `find -type f`.
# Usage: search.sh DRIVER
set -eu
driver=$1
work=$(mktemp -d /dev/shm/zpk-bench-XXXXXX)
trap 'rm -rf "$work"' EXIT INT TERM

folder=0
while [ $folder -lt 1000 ]; do
    mkdir "$work/folder$folder"
    (cd "$work/folder$folder" && seq -f 'file%.0f.txt' 100 | xargs touch)
    folder=$((folder + 1))
done

for round in 1 2 3; do
    start=$(date +%s%N)
    find "$work" -type f >/dev/null
    end=$(date +%s%N)
    peer=$(((end - start) / 100000))
    start=$(date +%s%N)
    "$driver" list "$work" >/dev/null
    end=$(date +%s%N)
    ours=$(((end - start) / 100000))
    echo "listing 100 000 files, round $round: ours $((ours / 10)).$((ours % 10)) ms," \
        "find -type f $((peer / 10)).$((peer % 10)) ms, ratio $(awk "BEGIN { printf \"%.2f\", $ours / $peer }"), bar at most 1.0"
done
"$driver" match "$work" '*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b'
