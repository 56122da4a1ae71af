#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT
#
# `zpkpack check` of a source with 100 000 files and 16 languages beside one `find` of it, both with warm caches.
# Usage: check.sh ZPKPACK UILANG
set -eu
zpkpack=$1
languages=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/zpk-bench-XXXXXX")
trap 'rm -rf "$work"' EXIT INT TERM

mkdir "$work/Info" "$work/Data"
cp -r "$languages" "$work/UILang"
printf '"CFBundleName" = "Hello"; "CFBundleIdentifier" = "com.example.Hello";\n' > "$work/Package.strings"
# shellcheck disable=SC2016 # the launcher's token, not the shell's
printf '<Startup Exec="$Data$/setup"/>\n' > "$work/Info/Startup.xml"
printf '#!/bin/sh\n' > "$work/Data/setup"
chmod +x "$work/Data/setup"
folder=0
while [ $folder -lt 1000 ]; do
    mkdir "$work/Data/folder$folder"
    (cd "$work/Data/folder$folder" && seq -f 'file%.0f.txt' 100 | xargs touch)
    folder=$((folder + 1))
done

milliseconds() {
    start=$(date +%s%N)
    "$@" > "$work.out"
    end=$(date +%s%N)
    echo $(((end - start) / 1000000))
}
find "$work" > "$work.out"
for round in 1 2 3; do
    peer=$(milliseconds find "$work")
    ours=$(milliseconds "$zpkpack" check "$work")
    echo "check of 100 000 files and 16 languages, round $round: ours $ours ms, find $peer ms," \
        "above it $((ours - peer)) ms, bar at most 2000"
done
command time -f 'peak memory %M KiB, bar at most 65536' "$zpkpack" check "$work"
rm -f "$work.out"
