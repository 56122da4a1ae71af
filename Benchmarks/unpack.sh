#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT
#
# Measures the archive tool beside its peers on one tree of about 1 GB of the machine's own files, in
# memory, and on many small files, and prints for each: ours, the peer's or the machine's limit, their ratio, and
# the bar.
# Usage: unpack.sh DITTO [ROUNDS [SMALL-FILES]]
set -eu
ditto=$(realpath "$1")
rounds=${2:-3}
smallFiles=${3:-100000}

work=$(mktemp -d /dev/shm/zpk-bench-XXXXXX)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT INT TERM
mkdir "$work/tree"

# Files over 40 MB would leave too few others.
cd /
find ./usr/lib/x86_64-linux-gnu ./usr/share/doc ./usr/share ./usr/lib \
    \( -type f -size -40000k -o -type l \) -readable -printf '%s %p\n' 2>/dev/null |
    awk '{ total += $1; if (total > 1000000000) exit; sub(/^[0-9]+ /, ""); print }' |
    cpio -pdm --quiet "$work/tree" 2>/dev/null || true
echo "tree: $(du -sm "$work/tree" | cut -f1) MB, $(find "$work/tree" -type f | wc -l) files"

# least NUMBER [NUMBER]
least() {
    printf '%s\n' "$@" | grep . | sort -n | head -n 1
}

# seconds COMMAND...: the best of the rounds, in hundredths, and the least processor time, as the user and in all; the
# folder "out" is new each time.
seconds() {
    best='' user='' processor=''
    round=0
    while [ $round -lt "$rounds" ]; do
        chmod -R u+w "$work/out" 2>/dev/null || true
        rm -rf "$work/out"
        mkdir "$work/out"
        /usr/bin/time -f '%e %M %U %S' -o "$work/time" sh -c "$1" >/dev/null
        read -r elapsed memory inUser inSystem <"$work/time"
        best=$(least "$elapsed" "$best")
        user=$(least "$inUser" "$user")
        processor=$(least "$(echo "$inUser + $inSystem" | bc)" "$processor")
        round=$((round + 1))
    done
}

# compare NAME OURS PEER AT-LEAST|AT-MOST BAR: how many times as fast (at least), or as long (at most).
compare() {
    if [ "$4" = at-least ]; then
        ratio=$(echo "scale=2; $3 / $2" | bc)
        good=$(echo "$ratio >= $5" | bc)
    else
        ratio=$(echo "scale=2; $2 / $3" | bc)
        good=$(echo "$ratio <= $5" | bc)
    fi
    verdict=ok
    [ "$good" = 1 ] || verdict=MISSED
    printf '%-52s ours %9s  peer %9s  ratio %5s  bar %s %s  %s\n' "$1" "$2" "$3" "$ratio" "$4" "$5" "$verdict"
}

cd "$work"
bsdtar --format cpio -cf plain.cpio tree
gzip -c plain.cpio >foreign.gz

seconds "'$ditto' -c -z -rsrc --keepParent tree own.gz"
pack=$best packMemory=$memory
seconds "bsdtar --format cpio -cf - tree | pigz >pigz.gz"
pigz=$best
seconds "'$ditto' -x -z --rsrc foreign.gz out"
foreign=$best foreignMemory=$memory
seconds "'$ditto' -x -z --rsrc own.gz out"
own=$best ownMemory=$memory
seconds "bsdtar -xf foreign.gz -C out"
bsdtar=$best
seconds "cd out && gzip -dc ../foreign.gz | cpio -id --quiet"
cpio=$best
seconds "cp -r tree out/"
copy=$best copyProcessor=$processor
seconds "igzip -dc foreign.gz"
inflate=$best
seconds "igzip -dc own.gz"
ownInflateProcessor=$processor ownInflate=$user
seconds "igzip -dc pigz.gz"
pigzInflate=$user
# What no program on this machine does much faster: one core inflates a foreign archive, and another one copies;
# all of them share the work on our own.
foreignLimit=$(printf '%s\n' "$inflate" "$copy" | sort -n | tail -n 1)
ownLimit=$(echo "scale=2; ($ownInflateProcessor + $copyProcessor) / $(nproc)" | bc)

compare "unpack any gzip archive, bsdtar -xf" "$foreign" "$bsdtar" at-least 2.5
compare "unpack any gzip archive, gzip -dc | cpio -id" "$foreign" "$cpio" at-least 4
compare "unpack any gzip archive, the larger of igzip and cp" "$foreign" "$foreignLimit" at-most 1.05
compare "unpack our own, (igzip + cp -r) / cores" "$own" "$ownLimit" at-most 1.05
compare "inflate our own, pigz's of the same" "$ownInflate" "$pigzInflate" at-least 1.15
compare "pack, pigz (seconds)" "$pack" "$pigz" at-least 1
compare "pack, pigz (bytes)" "$(stat -c %s own.gz)" "$(stat -c %s pigz.gz)" at-most 1
for row in "unpack any gzip archive:$foreignMemory" "unpack our own:$ownMemory" "pack:$packMemory"; do
    compare "peak memory in KiB, ${row%:*}" "${row#*:}" 65536 at-most 1
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
seconds "'$ditto' -x -z --rsrc own.gz out"
own=$best ownMemory=$memory
seconds "cp -r tree out/"
compare "unpack $smallFiles small files, cp -r" "$own" "$best" at-most 0.6
compare "peak memory in KiB, $smallFiles small files" "$ownMemory" 65536 at-most 1
