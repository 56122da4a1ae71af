#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Where the time of packing, unpacking and launching goes: a flame graph of each as SVG, and the system calls by kind.

usage: profile.py BUILD-FOLDER PICTURES-FOLDER

The programs are linked once more, with their symbols, and sampled by perf (by the processor's clock, which every
machine has); a frame is as wide as its part of the samples, the callers below. Takes perf and strace.
"""

import collections
import html
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

from growth import Bench, fill_with_files

WIDTH = 1200
ROW = 16
# Narrower frames show nothing.
NARROWEST = 1.5
DEEPEST = 40
CALLS_SHOWN = 8


def with_symbols(build, target, program):
    """Links the program of the build folder anew as `program`, with what perf finds callers by."""
    commands = subprocess.run(["ninja", "-C", build, "-t", "commands", target], check=True, capture_output=True,
                              text=True).stdout.splitlines()
    link = next(line for line in reversed(commands) if f" -o {target} " in line)
    link = link.replace(f" -o {target} ", f" -Wl,--eh-frame-hdr -o {program} ").replace(" -s ", " ")
    subprocess.run(link, check=True, shell=True, cwd=build)


def stacks_of(command, environment, folder):
    """How many samples each stack has, the outermost caller first."""
    data = folder / "perf.data"
    subprocess.run(["perf", "record", "--quiet", "-e", "cpu-clock", "-F", "1997", "--call-graph", "dwarf,16384",
                    "-o", data, "--", *command], check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, env=environment)
    text = subprocess.run(["perf", "script", "-i", data, "--no-inline", "-F", "comm,ip,sym"], check=True,
                          capture_output=True, text=True, errors="replace").stdout
    stacks = collections.Counter()
    for sample in text.split("\n\n"):
        program, *frames = sample.strip().split("\n")
        names = [shown(frame.split(None, 1)[1]) for frame in reversed(frames) if len(frame.split(None, 1)) == 2]
        stacks[(program.strip(), *names[:DEEPEST])] += 1
    return stacks


def shown(name):
    """A function's name without its arguments."""
    name = re.sub(r"\[clone [^]]*\]|\((?!anonymous namespace\)).*", "", name).strip()
    return name.replace("(anonymous namespace)::", "").replace("zpk_archive::", "") or "?"


def frames_of(stacks):
    """(depth, first sample, samples, name) of each frame: neighbours of one caller and one name are one frame."""
    first = 0
    open_frames = []
    for stack, count in sorted(stacks.items()):
        common = 0
        while common < min(len(stack), len(open_frames)) and open_frames[common][1] == stack[common]:
            common += 1
        for depth in range(len(open_frames) - 1, common - 1, -1):
            start, name = open_frames.pop()
            yield depth, start, first - start, name
        open_frames += [(first, name) for name in stack[common:]]
        first += count
    for depth in range(len(open_frames) - 1, -1, -1):
        start, name = open_frames.pop()
        yield depth, start, first - start, name


def draw(title, stacks, target):
    total = sum(stacks.values())
    frames = [frame for frame in frames_of(stacks) if frame[2] * WIDTH / total >= NARROWEST]
    height = (max(frame[0] for frame in frames) + 3) * ROW
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" font-family="sans-serif" '
             'font-size="11">',
             f'<rect width="{WIDTH}" height="{height}" fill="#fff"/>',
             f'<text x="4" y="13">{html.escape(title)}: {total} samples</text>']
    for depth, start, count, name in frames:
        x, width, y = start * WIDTH / total, count * WIDTH / total, height - (depth + 1) * ROW
        # The same name has the same colour in each picture.
        shade = random.Random(name)
        colour = f"hsl({shade.randrange(10, 55)},{shade.randrange(70, 95)}%,{shade.randrange(62, 78)}%)"
        text = name[:int(width / 6.2)] if width > 24 else ""
        lines.append(f'<g><title>{html.escape(name)} {100 * count / total:.1f} %</title>'
                     f'<rect x="{x:.1f}" y="{y}" width="{width:.1f}" height="{ROW - 1}" fill="{colour}"/>' +
                     (f'<text x="{x + 2:.1f}" y="{y + 11}">{html.escape(text)}</text>' if text else "") + "</g>")
    target.write_text("\n".join([*lines, "</svg>"]) + "\n")


def calls_of(command, environment, folder):
    table = folder / "calls"
    subprocess.run(["strace", "-f", "-c", "-U", "name,calls", "-o", table, *command], check=True, env=environment,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    rows = (line.split() for line in table.read_text().splitlines())
    calls = {row[0]: int(row[1]) for row in rows if len(row) == 2 and row[1].isdigit()}
    calls.pop("total", None)
    return sorted(calls.items(), key=lambda call: -call[1])


def fill(tree):
    """5000 files of 1 KB, and 60 MB of text that packs as programs do."""
    tree.mkdir()
    fill_with_files(tree, 5000)
    numbers = random.Random(1)
    words = [b"%x" % numbers.getrandbits(24) for _ in range(5000)]
    for number in range(20):
        (tree / f"large{number}").write_bytes(b" ".join(numbers.choices(words, k=450_000)))


def main():
    build, pictures = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    with tempfile.TemporaryDirectory(prefix="zpk-profile-", dir="/dev/shm") as name:
        folder = pathlib.Path(name)
        tree = folder / "tree"
        fill(tree)
        (folder / "tmp").mkdir(mode=0o700)
        environment = {"PATH": os.environ["PATH"], "HOME": name, "TMPDIR": f"{name}/tmp"}
        ditto = folder / "ditto"
        with_symbols(build, "Zephyrkit.app/Contents/Helpers/ditto", ditto)
        jobs = {"packing": [ditto, "-c", "-z", "-rsrc", "--keepParent", tree, folder / "archive"],
                "unpacking": [ditto, "-x", "-z", "--rsrc", folder / "archive", folder / "out"]}
        for job, command in jobs.items():
            report(job, command, environment, folder, pictures)
        launcher = Bench(build, folder).package(tree)
        with_symbols(build, "Zephyrkit.app/Contents/Linux/Zephyrkit", launcher)
        ditto.replace(launcher.parents[1] / "Helpers/ditto")
        report("launching", [launcher], environment, folder, pictures)


def report(job, command, environment, folder, pictures):
    shutil.rmtree(folder / "out", ignore_errors=True)
    draw(job, stacks_of(command, environment, folder), pictures / f"flame-{job}.svg")
    # What was there before would have to go first.
    shutil.rmtree(folder / "out", ignore_errors=True)
    calls = calls_of(command, environment, folder)
    print(f"{job}: {sum(count for _, count in calls)} system calls: " +
          ", ".join(f"{name} {count}" for name, count in calls[:CALLS_SHOWN]), flush=True)


if __name__ == "__main__":
    main()
