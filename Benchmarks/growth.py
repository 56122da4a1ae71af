#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""How time and memory of unpacking grow, from a thousand to a million small files and from 1 MB to 8 GB, beside
`cp -r` of the same tree; and the most memory that any process of a whole launch takes. Prints tables; with a
folder, also leaves plots there (gnuplot).

usage: growth.py BUILD-FOLDER [PLOTS-FOLDER [WORK-FOLDER]]

Everything lies in the work folder, /dev/shm by default, where it takes up to 20 GB: the tree of 8 GB, what `cp -r` made
of it, and the archive.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

COUNTS = [1_000, 10_000, 100_000, 1_000_000]
MEGABYTES = [1, 10, 100, 1000, 8000]
SMALL = b"a line of a small file, and another one\n" * 25
# Half of each megabyte is noise, so that it is neither all copied nor all inflated.
NOISE = os.urandom(500_000)


def measured(command, **settings):
    """Seconds, and the most memory in KiB that the process or one of its children took."""
    # Counted from here it would be at least what this interpreter takes.
    with tempfile.NamedTemporaryFile("r") as report:
        begin = time.monotonic()
        subprocess.run(["/usr/bin/time", "-f", "%M", "-o", report.name, *command], check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **settings)
        return time.monotonic() - begin, int(report.read())


def fill_with_files(folder, count):
    for first in range(0, count, 1000):
        inner = folder / f"{first // 1000:04}"
        inner.mkdir()
        descriptor = os.open(inner, os.O_RDONLY)
        for number in range(min(1000, count - first)):
            file = os.open(f"file{number:03}", os.O_CREAT | os.O_WRONLY, 0o644, dir_fd=descriptor)
            os.write(file, SMALL)
            os.close(file)
        os.close(descriptor)


def fill_with_bytes(folder, megabytes):
    with open(folder / "large", "wb") as file:
        for _ in range(megabytes):
            file.write(NOISE)
            file.write(bytes(len(NOISE)))


class Bench:
    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        self.ditto = build / "Zephyrkit.app/Contents/Helpers/ditto"

    def _fresh(self, name):
        folder = self.folder / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        return folder

    def package(self, data):
        """The launcher of a package with this folder, which is moved away."""
        source = self._fresh("source")
        (source / "Info").mkdir()
        (source / "Package.strings").write_text(
            '"CFBundleName" = "Benchmark"; "CFBundleIdentifier" = "com.example.Benchmark";'
        )
        (source / "Info/Startup.xml").write_text('<Startup Exec="$Data$/setup"/>')
        data.rename(source / "Data")
        (source / "Data/setup").write_text("#!/bin/sh\n")
        (source / "Data/setup").chmod(0o755)
        bundle = self.folder / "Growth.app"
        subprocess.run([self.build / "zpkpack", "build", source, "-o", bundle, "--without-windows", "--force", "--quiet"],
                       check=True, stdout=subprocess.DEVNULL)
        shutil.rmtree(source)
        return bundle / "Contents/Linux/Zephyrkit"

    def row(self, fill, amount):
        """Seconds of unpacking and of cp -r; KiB of packing, unpacking and of a launch."""
        tree = self._fresh("tree")
        fill(tree, amount)
        archive = self.folder / "archive"
        _, packing = measured([self.ditto, "-c", "-z", "-rsrc", "--keepParent", tree, archive])
        copying, _ = measured(["cp", "-r", tree, self._fresh("copy")])
        shutil.rmtree(self.folder / "copy")
        ours, unpacking = measured([self.ditto, "-x", "-z", "--rsrc", archive, self._fresh("out")])
        shutil.rmtree(self.folder / "out")
        archive.unlink()
        temporary = self._fresh("tmp")
        temporary.chmod(0o700)
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.folder), "TMPDIR": str(temporary)}
        _, launching = measured([self.package(tree)], env=environment)
        return [amount, ours, copying, packing, unpacking, launching]


def table(title, amounts, row_of):
    """Each row as soon as it is there: the last ones take minutes."""
    print(f"{title:>12}  unpacking    cp -r  ratio   packing unpacking launch, KiB at most", flush=True)
    rows = []
    for amount in amounts:
        rows.append(row_of(amount))
        amount, ours, copying, *memory = rows[-1]
        print(f"{amount:12} {ours:8.3f} s {copying:6.3f} s {ours / copying:6.2f} " +
              " ".join(f"{value:9}" for value in memory), flush=True)
    return rows


def plot(rows, target, amounts):
    data = "\n".join(" ".join(map(str, row)) for row in rows)
    script = f"""
        set terminal svg size 640,420 background rgb 'white'
        set output '{target}'
        set logscale xy
        set xlabel '{amounts}'
        set ylabel 'seconds'
        set y2label 'memory at most, MiB'
        set y2range [1:100]
        set logscale y2
        set y2tics
        set ytics nomirror
        set key top left
        $rows << END
{data}
END
        plot $rows using 1:2 with linespoints title 'unpacking', $rows using 1:3 with linespoints title 'cp -r', \\
             $rows using 1:($5/1024) axes x1y2 with linespoints dashtype 2 title 'memory, unpacking', \\
             $rows using 1:($6/1024) axes x1y2 with linespoints dashtype 2 title 'memory, whole launch'
    """
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    plots = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else None
    work = sys.argv[3] if len(sys.argv) > 3 else "/dev/shm"
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-growth-", dir=work))
    try:
        bench = Bench(build, folder)
        files = table("files", COUNTS, lambda count: bench.row(fill_with_files, count))
        sizes = table("MB", MEGABYTES, lambda megabytes: bench.row(fill_with_bytes, megabytes))
    finally:
        shutil.rmtree(folder)
    if plots:
        plot(files, plots / "growth-files.svg", "files of 1 KB")
        plot(sizes, plots / "growth-bytes.svg", "MB, half of them noise")


if __name__ == "__main__":
    main()
