#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT
#
# Measures the archive tool beside its peers on one tree of about 1 GB of the machine's own files, in
# memory, and on many small files, and prints for each: ours, the peer's or the machine's limit, their ratio, and
# the bar.
# Usage: unpack.sh BUILD-FOLDER [ROUNDS [SMALL-FILES [MEGABYTES]]]
set -eu
ditto=$(realpath "$1")/Zephyrkit.app/Contents/Helpers/ditto
inflater=$(realpath "$1")/Benchmarks/zpk_inflate_driver
rounds=${2:-3}
smallFiles=${3:-100000}
megabytes=${4:-1000}

work=$(mktemp -d /dev/shm/zpk-bench-XXXXXX)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT INT TERM
mkdir "$work/tree"

# Files over 40 MB would leave too few others.
cd /
find ./usr/lib/x86_64-linux-gnu ./usr/share/doc ./usr/share ./usr/lib \
    \( -type f -size -40000k -o -type l \) -readable -printf '%s %p\n' 2>/dev/null |
    awk -v most="$((megabytes * 1000000))" '{ total += $1; if (total > most) exit; sub(/^[0-9]+ /, ""); print }' |
    cpio -pdm --quiet "$work/tree" 2>/dev/null || true
echo "tree: $(du -sm "$work/tree" | cut -f1) MB, $(find "$work/tree" -type f | wc -l) files"

# turn NAME COMMAND: runs it once and keeps what it took; the folder "out" is new each time.
turn() {
    chmod -R u+w "$work/out" 2>/dev/null || true
    rm -rf "$work/out"
    mkdir "$work/out"
    /usr/bin/time -f "$1 %e %U %S %M" -a -o "$work/times" sh -c "$2" >/dev/null
}

# inTurns NAME COMMAND [NAME COMMAND]...: all of them in each round, so that what else the machine does, and how
# fast it is at the moment, meets each in the same way.
inTurns() {
    round=0
    while [ $round -lt "$rounds" ]; do
        job=1
        while [ $job -lt $# ]; do
            turn "$(eval "echo \"\${$job}\"")" "$(eval "echo \"\${$((job + 1))}\"")"
            job=$((job + 2))
        done
        round=$((round + 1))
    done
}

# Seconds from start to end, of the processor as the user, and of the processor; the most KiB.
elapsed='$2' user='$3' processor='$3 + $4' memory='$5'

# least VALUE NAME, and median, most.
least() { at 1 "$1" "$2"; }
median() { at $((rounds / 2 + 1)) "$1" "$2"; }
most() { at "$rounds" "$1" "$2"; }
at() {
    awk -v name="$3" "\$1 == name { print $2 }" "$work/times" | sort -n | sed -n "$1p"
}

# compare NAME OURS PEER AT-LEAST|AT-MOST BAR [SPREAD]: how many times as fast (at least), or as long (at most).
# A tree that is small enough leaves nothing to divide by.
compare() {
    if [ "$(echo "$2 == 0 || $3 == 0" | bc)" = 1 ]; then
        printf '%-52s ours %9s  peer %9s  too short to compare\n' "$1" "$2" "$3"
        return
    fi
    if [ "$4" = at-least ]; then
        ratio=$(echo "scale=2; $3 / $2" | bc)
        good=$(echo "$ratio >= $5" | bc)
    else
        ratio=$(echo "scale=2; $2 / $3" | bc)
        good=$(echo "$ratio <= $5" | bc)
    fi
    verdict=ok
    [ "$good" = 1 ] || verdict=MISSED
    printf '%-52s ours %9s  peer %9s  ratio %5s  bar %s %s  %s%s\n' "$1" "$2" "$3" "$ratio" "$4" "$5" "$verdict" "${6-}"
}

# beside NAME VALUE OURS PEER AT-LEAST|AT-MOST BAR: the least of each, and between which medians and ratios they lie.
beside() {
    spread="  (medians $(median "$2" "$3") and $(median "$2" "$4"), most $(most "$2" "$3") and $(most "$2" "$4"))"
    compare "$1" "$(least "$2" "$3")" "$(least "$2" "$4")" "$5" "$6" "$spread"
}

# larger NUMBER NUMBER
larger() {
    printf '%s\n' "$@" | sort -n | tail -n 1
}

cd "$work"
bsdtar --format cpio -cf plain.cpio tree
gzip -c plain.cpio >foreign.gz

inTurns pack "'$ditto' -c -z -rsrc --keepParent tree own.gz" \
    pigz "bsdtar --format cpio -cf - tree | pigz >pigz.gz"
inTurns foreign "'$ditto' -x -z --rsrc foreign.gz out" \
    bsdtar "bsdtar -xf foreign.gz -C out" \
    cpio "cd out && gzip -dc ../foreign.gz | cpio -id --quiet"
# The limits in rounds of their own: a peer that takes long warms or cools the machine.
inTurns foreign-near "'$ditto' -x -z --rsrc foreign.gz out" \
    inflate "igzip -dc foreign.gz" \
    copy "cp -r tree out/" \
    own "'$ditto' -x -z --rsrc own.gz out" \
    inflate-own "igzip -dc own.gz"
inTurns all-own "'$inflater' own.gz" \
    all-pigz "'$inflater' pigz.gz"
inTurns read-own "taskset -c 0 '$inflater' own.gz" \
    read-pigz "taskset -c 0 '$inflater' pigz.gz" \
    igzip-own "igzip -dc own.gz" \
    igzip-pigz "igzip -dc pigz.gz"

beside "unpack any gzip archive, bsdtar -xf" "$elapsed" foreign bsdtar at-least 2.5
beside "unpack any gzip archive, gzip -dc | cpio -id" "$elapsed" foreign cpio at-least 4
# What no program on this machine does much faster: one core inflates a foreign archive, and another one copies;
# all of them share the work on our own.
compare "unpack any gzip archive, the larger of igzip and cp" "$(least "$elapsed" foreign-near)" \
    "$(larger "$(least "$elapsed" inflate)" "$(least "$elapsed" copy)")" at-most 1.05 \
    "  (medians $(median "$elapsed" foreign-near) and $(larger "$(median "$elapsed" inflate)" "$(median "$elapsed" copy)"))"
shared() {
    echo "scale=2; ($("$1" "$processor" inflate-own) + $("$1" "$processor" copy)) / $(nproc)" | bc
}
compare "unpack our own, (igzip + cp -r) / cores" "$(least "$elapsed" own)" "$(shared least)" at-most 1.05 \
    "  (medians $(median "$elapsed" own) and $(shared median))"
# Members are inflated side by side, a stream is not: what the person waits for who opens it. Then what the choice of
# blocks and the way of reading them give on one core.
beside "read our own on all cores, pigz's of the same" "$elapsed" all-own all-pigz at-least 1.15
beside "read our own on one core, pigz's of the same" "$user" read-own read-pigz at-least 1.15
beside "the same by igzip, which takes both as streams" "$user" igzip-own igzip-pigz at-least 0.9
beside "pack, pigz (seconds)" "$elapsed" pack pigz at-least 1
compare "pack, pigz (bytes)" "$(stat -c %s own.gz)" "$(stat -c %s pigz.gz)" at-most 1
for row in "unpack any gzip archive:foreign" "unpack our own:own" "pack:pack"; do
    compare "peak memory in KiB, ${row%:*}" "$(most "$memory" "${row#*:}")" 65536 at-most 1
done

rm -rf tree foreign.gz own.gz pigz.gz plain.cpio
awk -v files="$smallFiles" 'BEGIN {
    for (i = 0; i < files; ++i) {
        folder = sprintf("tree/folder%d", i / 100)
        if (i % 100 == 0) system("mkdir -p " folder)
        name = folder "/file" i
        text = ""
        while (length(text) < 1024) text = text " " int(rand() * 1000000)
        printf "%s", substr(text, 1, 1024) >name
        close(name)
    }
}'
"$ditto" -c -z -rsrc --keepParent tree own.gz
inTurns small "'$ditto' -x -z --rsrc own.gz out" small-copy "cp -r tree out/"
beside "unpack $smallFiles small files, cp -r" "$elapsed" small small-copy at-most 0.6
compare "peak memory in KiB, $smallFiles small files" "$(most "$memory" small)" 65536 at-most 1
