#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""A whole launch with a large payload, from the start to the first instruction of the setup program less the
pause of one second, beside a shell archive of the same tree, and beside what it cannot do without: a copy of
the archive and its unpacking. Medians, each kind in turn.

usage: launch.py BUILD-FOLDER [RUNS [MEGABYTES]]

Everything lies in /dev/shm.
"""

import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from startup import PAUSE, Times

# Library files and documents of this machine, until there are so many bytes.
TREE = r"""
cd / && find ./usr/lib/x86_64-linux-gnu ./usr/share/doc ./usr/share ./usr/lib \( -type f -size -40000k -o -type l \) \
    -readable -printf '%s %p\n' 2>/dev/null |
    awk -v most="$1" '{ total += $1; if (total > most) exit; sub(/^[0-9]+ /, ""); print }' | cpio -pdm --quiet "$2" 2>/dev/null
"""


def fill(folder, size):
    subprocess.run(["sh", "-c", TREE, "sh", str(size), folder], check=False)
    return sum(path.lstat().st_size for path in folder.rglob("*") if path.is_file() and not path.is_symlink())


def seconds(*command):
    begin = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.monotonic() - begin


class Bench:
    def __init__(self, build, folder, size):
        self.folder = folder
        source = folder / "source"
        (source / "Info").mkdir(parents=True)
        self.data = source / "Data"
        self.data.mkdir()
        (source / "Package.strings").write_text(
            '"CFBundleName" = "LaunchBench"; "CFBundleIdentifier" = "com.example.LaunchBench";'
        )
        (source / "Info/Startup.xml").write_text('<Startup Exec="$Data$/setup"/>')
        print(f"tree: {fill(self.data, size) / 1e6:.0f} MB, {sum(1 for _ in self.data.rglob('*'))} files and folders")
        shutil.copy(build / "Benchmarks/zpk_startup_probe", self.data / "setup")
        bundle = folder / "Launch.app"
        subprocess.run([build / "zpkpack", "build", source, "-o", bundle, "--without-windows", "--quiet"], check=True,
                       stdout=subprocess.DEVNULL)
        self.launcher = bundle / "Contents/Linux/Zephyrkit"
        self.ditto = bundle / "Contents/Helpers/ditto"
        self.scrambled = bundle / "Contents/Resources/Data.datx"
        self.plain = folder / "Data.dat"
        subprocess.run([build / "zpkpack", "unscramble", self.scrambled, self.plain, "--quiet"], check=True)
        self.shell = folder / "makeself.run"
        subprocess.run(["makeself", "--nox11", "--gzip", self.data, self.shell, "LaunchBench", "./setup"], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def unpack(self):
        target = self.folder / "unpacked"
        target.mkdir()
        taken = seconds(self.ditto, "-x", "-z", "--rsrc", self.plain, target)
        subprocess.run(["chmod", "-R", "u+w", target], check=True)
        shutil.rmtree(target)
        return taken

    def copy(self):
        target = self.folder / "copy"
        taken = seconds("cp", self.scrambled, target)
        target.unlink()
        return taken


def row(what, value, bar=None, at_least=False):
    words = f"launch, {what:58} {value:7.3f}"
    if bar is not None:
        good = value >= bar if at_least else value <= bar
        words += f"   bar {'at least' if at_least else 'at most'} {bar}  " + ("ok" if good else "MISSED")
    print(words)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    size = (int(sys.argv[3]) if len(sys.argv) > 3 else 1000) * 1_000_000
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-launch-", dir="/dev/shm"))
    mark = folder / "mark"
    temporary = folder / "tmp"
    temporary.mkdir(mode=0o700)
    environment = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
    environment.update(TMPDIR=str(temporary), ZPK_STARTUP_TIME=str(mark))
    try:
        bench = Bench(build, folder, size)
        ours, shell, copies, unpackings = Times(), Times(), [], []
        for _ in range(runs):
            ours.run([bench.launcher], mark, environment, PAUSE)
            shell.run([bench.shell, "--quiet", "--noprogress"], mark, environment, 0)
            copies.append(bench.copy())
            unpackings.append(bench.unpack())
    finally:
        subprocess.run(["chmod", "-R", "u+w", folder], check=False)
        shutil.rmtree(folder)
    launch, peer = ours.summary()[0], shell.summary()[0]
    parts = statistics.median(copies) + statistics.median(unpackings)
    row("to the first instruction of the setup program, seconds", launch)
    row("the same with a shell archive (makeself, gzip), seconds", peer)
    row("times as fast", peer / launch, 4, at_least=True)
    row("cp of the archive and our unpacking of it, seconds", parts)
    row("the launch beside these", launch / parts, 1.3)


if __name__ == "__main__":
    main()
