#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What a package weighs that has nothing to install, how fast the archive tool starts, and which Linux the
programs want, beside a shell archive (makeself) and /bin/true.

usage: distribution.py BUILD-FOLDER [RUNS]
"""

import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "Tests/Build"))
sys.dont_write_bytecode = True
from elf_file import ElfFile  # noqa: E402

MEGABYTE = 1_000_000


def row(what, value, unit, bar=None, shown=None):
    words = f"distribution, {what:50} {shown or '%.3f' % value:>8} {unit:2}"
    if bar is not None:
        words += f"   bar {bar:g} {unit}  " + ("ok" if value <= bar else "MISSED")
    print(words.rstrip())


def bytes_of(path):
    if path.is_file():
        return path.stat().st_size
    return sum(each.stat().st_size for each in path.rglob("*") if each.is_file())


def sizes(build, folder):
    source = folder / "source"
    for name in ("Info", "Data"):
        (source / name).mkdir(parents=True)
    (source / "Package.strings").write_text('"CFBundleName" = "Empty"; "CFBundleIdentifier" = "com.example.Empty";')
    (source / "Info/Startup.xml").write_text('<Startup Exec="/bin/true"/>')

    def packed(name, *options):
        subprocess.run([build / "zpkpack", "build", source, "-o", folder / name, *options], check=True,
                       stdout=subprocess.DEVNULL)
        return bytes_of(folder / name) / MEGABYTE

    shell_archive = folder / "makeself.run"
    subprocess.run(["makeself", "--nox11", source / "Data", shell_archive, "Empty", "true"], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    row("bundle without payload", packed("Empty.app"), "MB", 55)
    row("the same as one file", packed("Empty.run"), "MB", 18)
    row("bundle without windows", packed("Small.app", "--without-windows"), "MB", 4)
    row("the same as one file", packed("Small.run", "--without-windows"), "MB", 1.6)
    row("empty shell archive (makeself)", bytes_of(shell_archive) / MEGABYTE, "MB")


def seconds_of(command):
    start = time.perf_counter()
    subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - start


def starts(build, runs):
    """Both are started alike, so what starting costs here is in both."""
    ditto = str(build / "Zephyrkit.app/Contents/Helpers/ditto")
    times = {ditto: [], "/bin/true": []}
    for _ in range(runs):
        for program, values in times.items():
            values.append(seconds_of([program]))
    ours, peer = (1000 * statistics.median(values) for values in times.values())
    row("start and end of ditto, no arguments", ours, "ms")
    row("start and end of /bin/true", peer, "ms")
    row("the first above the second", ours - peer, "ms", 1)


def kernels(build):
    contents = build / "Zephyrkit.app/Contents"
    programs = [contents / "Linux/Zephyrkit", contents / "Helpers/ditto", build / "zephyrkit-run"]
    windows = [path for path in (contents / "Frameworks").rglob("*")
               if path.is_file() and path.open("rb").read(4) == b"\x7fELF"]
    for what, files, bar in (("oldest Linux, programs", programs, (3, 2)), ("oldest Linux, windows", windows, (3, 17))):
        newest = max(ElfFile(path).kernel or (0, 0) for path in files)
        shown = "%d.%d" % newest
        print(f"distribution, {what:50} {shown:>8}      bar {bar[0]}.{bar[1]}  " + ("ok" if newest <= bar else "MISSED"))


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 300
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-distribution-"))
    try:
        sizes(build, folder)
    finally:
        shutil.rmtree(folder)
    starts(build, runs)
    kernels(build)


if __name__ == "__main__":
    main()
