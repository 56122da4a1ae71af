#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT
#
# Unscrambling where the file system lets files share blocks, beside a `cp` that copies them: btrfs and xfs, each on
# a loop device. Takes root, two GiB on the disk for a while, and the file systems of the running kernel.
# usage: sharing.sh BUILD_FOLDER [WORK_FOLDER [MEBIBYTES]]
# Prints the best of five runs each, the ratio (bar: 0.3) and how much of the file is shared.
set -eu
driver=$1/Benchmarks/zpk_scramble_driver
size=${3:-512}
if [ "$(id -u)" != 0 ] || [ ! -e /dev/loop-control ]; then
    echo "sharing: needs root and loop devices, left out"
    exit 0
fi
work=$(mktemp -d "${2:-/var/tmp}/zpk-sharing-XXXXXX")
cleanUp() {
    umount "$work/mounted" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanUp EXIT
trap 'exit 1' INT TERM
mkdir "$work/mounted"

now() { date +%s.%N; }

# seconds COMMAND...: into the file "out" of the mounted file system, with nothing left to be written before.
seconds() {
    rm -f "$work/mounted/out"
    sync -f "$work/mounted"
    cat "$work/mounted/plain" "$work/mounted/scrambled" >/dev/null
    start=$(now)
    "$@" >/dev/null
    echo "$(now) - $start" | bc
}

# shared FILE: MiB of its extents that another file has, too.
shared() {
    filefrag -v "$1" | awk '/shared/ { blocks += $6 } END { printf "%d", blocks * 4096 / 1048576 }'
}

for system in btrfs xfs; do
    rm -f "$work/image"
    truncate -s "$((size * 5))M" "$work/image"
    "mkfs.$system" -q "$work/image" >/dev/null
    if ! mount -o loop "$work/image" "$work/mounted" 2>/dev/null; then
        echo "sharing: this kernel mounts no $system here, left out"
        continue
    fi
    head -c "$((size * 1024 * 1024))" /dev/urandom >"$work/mounted/plain"
    "$driver" fake "$work/mounted/plain" "$work/mounted/scrambled" >/dev/null
    : >"$work/times"
    for _ in 1 2 3 4 5; do
        echo "cp $(seconds cp --reflink=never "$work/mounted/scrambled" "$work/mounted/out")" >>"$work/times"
        echo "unfake $(seconds "$driver" unfake "$work/mounted/scrambled" "$work/mounted/out")" >>"$work/times"
    done
    cmp "$work/mounted/plain" "$work/mounted/out"
    awk -v system_="$system" -v size="$size" -v shared="$(shared "$work/mounted/out")" '
        !($1 in best) || $2 < best[$1] { best[$1] = $2 }
        END {
            ratio = best["unfake"] / best["cp"]
            printf "%-5s %5d MiB, %d of them shared  unfake %.3f s  cp --reflink=never %.3f s  ratio %.2f  bar at most 0.3  %s\n",
                system_, size, shared, best["unfake"], best["cp"], ratio, ratio <= 0.3 ? "ok" : "MISSED"
        }' "$work/times"
    umount "$work/mounted"
done
