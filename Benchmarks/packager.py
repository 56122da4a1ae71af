#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The packager beside its peers: packing 1 GB of the machine's own files, listing it, checking a source of 100,000
files in 16 languages beside one `find` of it, making one file on one processor and on all, and the most memory
that each command takes. Each kind and its peer take turns; the bars are for the medians, and the least, which
other work on the machine disturbs less, stands beside them.

usage: packager.py BUILD-FOLDER [RUNS [FOLDER]]

Everything lies in FOLDER, /dev/shm unless told.
"""

import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

LARGE = 1_000_000_000
# A larger file would leave too few others.
LARGEST_FILE = 40_000_000
FILES = 100_000
MEMORY = 64
MEBIBYTE = 1 << 20
LANGUAGES = pathlib.Path(__file__).resolve().parents[1] / "Resources/UILang"


def row(what, values, unit, bar=None):
    """The first of the values is what counts."""
    words = f"packager, {what:48}" + "".join(f" {value:9.3f}" for value in values) + f" {unit}"
    if bar is not None:
        words += f"   bar {bar:g} {unit}  ".replace("   bar", f"{'':{max(0, 3 - len(unit))}}   bar")
        words += "ok" if values[0] <= bar else "MISSED"
    print(words, flush=True)


def run(command, folder):
    """Seconds, and the most memory, in MiB, of the command or a process of its own."""
    start = time.perf_counter()
    process = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE)
    problem = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    taken = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{command}: {problem.decode(errors='replace')}")
    return taken, usage.ru_maxrss * 1024 / MEBIBYTE


def in_turns(folder, runs, commands):
    """Median and least seconds of each command; what it makes is removed before each run."""
    times = {name: [] for name in commands}
    for _ in range(runs):
        for name, (command, made) in commands.items():
            remove(folder / made)
            times[name].append(run(command, folder)[0])
    return {name: [statistics.median(values), min(values)] for name, values in times.items()}


def remove(path):
    if path.is_dir():
        shutil.rmtree(path)
    else:
        path.unlink(missing_ok=True)


def beside(ours, peer):
    return [mine / other for mine, other in zip(ours, peer)]


def new_source(zpkpack, folder, name):
    subprocess.run([zpkpack, "new", folder / name, "--name", name], check=True, stdout=subprocess.DEVNULL)
    return folder / name


def fill_with_machine_files(data):
    """Some again under another name where the machine has fewer."""
    size = 0
    for turn in range(10):
        for top in ("/usr/lib/x86_64-linux-gnu", "/usr/share", "/usr/lib", "/usr/bin"):
            for where, folders, names in os.walk(top):
                folders.sort()
                for name in sorted(names):
                    path = os.path.join(where, name)
                    if os.path.islink(path) or not os.access(path, os.R_OK) or os.path.getsize(path) > LARGEST_FILE:
                        continue
                    target = data / str(turn) / path[1:]
                    target.parent.mkdir(parents=True, exist_ok=True)
                    shutil.copy(path, target)
                    size += os.path.getsize(path)
                    if size >= LARGE:
                        return


def fill_with_many_files(source):
    shutil.copytree(LANGUAGES, source / "UILang")
    for folder in range(FILES // 100):
        inner = source / f"Data/folder{folder}"
        inner.mkdir()
        for number in range(100):
            (inner / f"file{number}.txt").touch()


def pack(zpkpack, folder, runs):
    source = new_source(zpkpack, folder, "Large")
    fill_with_machine_files(source / "Data")
    times = in_turns(folder, runs, {
        "ours": ([zpkpack, "build", "Large", "-o", "Large.app", "--force"], "Large.app"),
        "pigz": (["sh", "-c", "bsdtar --format cpio -cf - -C Large Data | pigz >pigz.gz"], "pigz.gz"),
        "tar": (["sh", "-c", "tar -C Large -czf tar.gz Data"], "tar.gz"),
    })
    row("pack 1 GB, `zpkpack build`", times["ours"], "s")
    row("the same, `bsdtar --format cpio | pigz`", times["pigz"], "s")
    row("the same, `tar czf`", times["tar"], "s")
    row("the first beside `pigz`", beside(times["ours"], times["pigz"]), "x", 1)
    row("the first beside `tar czf`", beside(times["ours"], times["tar"]), "x", 1)
    packed = (folder / "Large.app/Contents/Resources/Data.datx").stat().st_size
    row("size of the archive beside `pigz`", [packed / (folder / "pigz.gz").stat().st_size], "x", 1)
    row("size of the archive beside `tar czf`", [packed / (folder / "tar.gz").stat().st_size], "x", 1)
    (folder / "tar.gz").unlink()


def look(zpkpack, folder, runs):
    subprocess.run([zpkpack, "unscramble", "Large.app/Contents/Resources/Data.datx", "plain.gz"], cwd=folder, check=True)
    times = in_turns(folder, runs, {
        "ours": ([zpkpack, "list", "Large.app"], "none"),
        "bsdtar": (["bsdtar", "-tf", "plain.gz"], "none"),
    })
    row("list 1 GB, `zpkpack list`", times["ours"], "s")
    row("the same, `bsdtar -tf`", times["bsdtar"], "s")
    row("the first beside the second", beside(times["ours"], times["bsdtar"]), "x", 1)


def check(zpkpack, folder, runs):
    source = new_source(zpkpack, folder, "Many")
    fill_with_many_files(source)
    run(["find", "Many"], folder)
    times = in_turns(folder, max(3, runs), {
        "ours": ([zpkpack, "check", "Many"], "none"),
        "find": (["find", "Many"], "none"),
    })
    row("check 100,000 files, 16 languages, `zpkpack check`", times["ours"], "s")
    row("`find` of the same", times["find"], "s")
    row("the first above the second", [ours - peer for ours, peer in zip(times["ours"], times["find"])], "s", 2)


def one_file(zpkpack, folder, runs):
    new_source(zpkpack, folder, "Small")
    build = [zpkpack, "build", "Small", "-o", "Small.run", "--force"]
    first = str(min(os.sched_getaffinity(0)))
    times = in_turns(folder, min(runs, 3), {
        "all": (build, "Small.run"),
        "one": (["taskset", "-c", first, *build], "Small.run"),
    })
    row("one file with windows, all processors", times["all"], "s")
    row("the same, one processor", times["one"], "s")


def memory(zpkpack, folder):
    """Each command on the package that it takes most for: the large one, or the one of many files."""
    commands = [["new", "Other"]]
    for name in ("Large", "Many"):
        commands += [
            ["build", name, "-o", f"{name}.app", "--force"],
            ["build", name, "-o", f"{name}.run", "--force"],
            ["check", name],
        ]
        for package in (f"{name}.app", f"{name}.run"):
            commands += [["check", package], ["list", package], ["list", "--format", "json", package],
                         ["verify", package], ["extract", package, "-o", "Extracted"]]
    commands += [
        ["strings", "Many"],
        ["scramble", "Large.app/Contents/Resources/Data.datx", "turned"],
        ["unscramble", "turned", "back"],
        ["preview", "Small", "-o", "Pictures", "--lang", "en"],
    ]
    most = {}
    for command in commands:
        remove(folder / "Extracted")
        taken = run([zpkpack, *command], folder)[1]
        most[command[0]] = max(most.get(command[0], 0), taken)
    for name, taken in most.items():
        row(f"most memory, `zpkpack {name}`", [taken], "MiB", MEMORY)


def main():
    zpkpack = pathlib.Path(sys.argv[1]).resolve() / "zpkpack"
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-packager-", dir=sys.argv[3] if len(sys.argv) > 3 else "/dev/shm"))
    try:
        print(f"packager, {'':48}    median     least", flush=True)
        for part in (pack, look, check, one_file):
            part(zpkpack, folder, runs)
        memory(zpkpack, folder)
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
