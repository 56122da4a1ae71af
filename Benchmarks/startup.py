#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Start of a package to the first instruction of its setup program, less the pause of one second, beside the
same launcher and an empty application on this machine's own Qt, and a shell archive. Each kind runs once to
warm up, then all take turns. Printed are the median, which the bars are for, the least, which other work on the
machine disturbs less, and the processor time of the whole run.

usage: startup.py BUILD-FOLDER [RUNS [FOLDER]]

Everything lies in FOLDER, /dev/shm unless told: what a disk adds, by what was removed from it of late, would be most
of what is measured.
"""

import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

PAUSE = 1.0  # the full bar stays on the screen for so long
PAYLOAD = 100_000


def x_server():
    reader, writer = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x800x24", "-nolisten", "tcp"],
        pass_fds=[writer],
        stderr=subprocess.DEVNULL,
    )
    os.close(writer)
    with os.fdopen(reader) as pipe:
        return server, ":" + pipe.readline().strip()


class Times:
    """What one kind took: seconds to the mark, and seconds of the processor until the end."""

    def __init__(self):
        self.elapsed = []
        self.processor = []

    def run(self, command, mark, environment, pause):
        mark.unlink(missing_ok=True)
        start = time.clock_gettime(time.CLOCK_MONOTONIC)
        process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise subprocess.CalledProcessError(process.returncode, command)
        self.elapsed.append(float(mark.read_text()) - start - pause)
        self.processor.append(usage.ru_utime + usage.ru_stime)

    def summary(self):
        return [statistics.median(self.elapsed), min(self.elapsed), statistics.median(self.processor)]


class Packages:
    """One payload, packed in every way."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        self.source = folder / "source"
        (self.source / "Info").mkdir(parents=True)
        data = self.source / "Data"
        data.mkdir()
        (self.source / "Package.strings").write_text(
            '"CFBundleName" = "StartupBench"; "CFBundleIdentifier" = "com.example.StartupBench";'
        )
        (self.source / "Info/Startup.xml").write_text('<Startup Exec="$Data$/setup"/>')
        shutil.copy(build / "Benchmarks/zpk_startup_probe", data / "setup")
        (data / "noise").write_bytes(os.urandom(PAYLOAD))

    def zpkpack(self, name, *options):
        """The program to start of a package."""
        package = self.folder / name
        subprocess.run([self.build / "zpkpack", "build", self.source, "-o", package, *options], check=True,
                       stdout=subprocess.DEVNULL)
        return package if name.endswith(".run") else package / "Contents/Linux/Zephyrkit"

    def on_the_hosts_toolkit(self):
        """The launcher's second stage in the place of the first, with no libraries beside it."""
        launcher = self.zpkpack("Host.app")
        contents = launcher.parents[1]
        shutil.copy(contents / "Frameworks/Zephyrkit-desktop", launcher)
        shutil.rmtree(contents / "Frameworks")
        return launcher

    def shell_archive(self):
        package = self.folder / "makeself.run"
        subprocess.run(["makeself", "--nox11", self.source / "Data", package, "StartupBench", "./setup"], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return package


def settle(temporary):
    """A run file's watcher, which removes what it placed, must not disturb the next kind."""
    while any(temporary.glob("zephyrkit-run-*")):
        time.sleep(0.01)


def measure(build, folder, display, runs):
    temporary = folder / "tmp"
    temporary.mkdir(mode=0o700)
    mark = folder / "mark"
    windows = dict(os.environ, DISPLAY=display, TMPDIR=str(temporary), XDG_RUNTIME_DIR=str(folder),
                   ZPK_STARTUP_TIME=str(mark))
    terminal = {key: value for key, value in windows.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
    packages = Packages(build, folder)
    kinds = {
        "windows": ([packages.zpkpack("Windows.app")], windows, PAUSE),
        "host": ([packages.on_the_hosts_toolkit()], windows, PAUSE),
        "empty": ([build / "Benchmarks/zpk_empty_qt_application"], windows, 0),
        "run": ([packages.zpkpack("Windows.run")], windows, PAUSE),
        "terminal": ([packages.zpkpack("Terminal.app")], terminal, PAUSE),
        "small": ([packages.zpkpack("Small.app", "--without-windows")], terminal, PAUSE),
        "small run": ([packages.zpkpack("Small.run", "--without-windows")], terminal, PAUSE),
        "shell": ([packages.shell_archive(), "--quiet", "--noprogress"], terminal, 0),
    }
    times = {name: Times() for name in kinds}
    for turn in range(runs + 1):
        for name, (command, environment, pause) in kinds.items():
            (times[name] if turn > 0 else Times()).run(command, mark, environment, pause)
            settle(temporary)
    return {name: each.summary() for name, each in times.items()}


def above(ours, peer):
    return [mine - other for mine, other in zip(ours, peer)]


def beside(ours, peer):
    return [mine / other for mine, other in zip(ours, peer)]


def row(what, values, bar=None):
    words = f"start-up, {what:50}" + "".join(f" {value:7.3f}" for value in values)
    if bar is not None:
        words += f"   bar {bar:.3f}  " + ("ok" if values[0] <= bar else "MISSED")
    print(words)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 15
    place = sys.argv[3] if len(sys.argv) > 3 else "/dev/shm"
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-startup-", dir=place))
    server, display = x_server()
    try:
        times = measure(build, folder, display, runs)
    finally:
        server.terminate()
        server.wait()
        shutil.rmtree(folder)
    print(f"start-up, {'':50}  median   least  processor; seconds or ratios")
    row("bundle with windows", times["windows"], 0.050)
    row("the same launcher on the host's Qt", times["host"])
    row("the first beside the second", beside(times["windows"], times["host"]), 1.0)
    row("an empty application on the host's Qt", times["empty"])
    row("bundle with windows above the empty application", above(times["windows"], times["empty"]), 0.050)
    row("bundle on the terminal", times["terminal"], 0.012)
    row(".run with windows", times["run"])
    row(".run with windows above the bundle", above(times["run"], times["windows"]), 0.350)
    row("bundle without windows, terminal", times["small"], 0.012)
    row(".run without windows", times["small run"])
    row(".run without windows above the bundle", above(times["small run"], times["small"]), 0.050)
    row("shell archive of the same payload (makeself)", times["shell"])
    row(".run without windows beside it", beside(times["small run"], times["shell"]))


if __name__ == "__main__":
    main()
