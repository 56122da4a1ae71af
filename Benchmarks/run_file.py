#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What placing a large run file costs above its bundle, beside `cp` of the file, and how soon a window is there
with a payload of 100 MB. Medians, each kind in turn.

usage: run_file.py BUILD-FOLDER [RUNS [FOLDER]]

Everything lies in FOLDER, /dev/shm unless told.
"""

import os
import pathlib
import queue
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time

from startup import settle, x_server

LARGE = 1_000_000_000
MIDDLE = 100_000_000


def now():
    return time.clock_gettime(time.CLOCK_MONOTONIC)


class Package:
    def __init__(self, build, folder, name, size, *options):
        source = folder / ("source-" + name)
        (source / "Info").mkdir(parents=True)
        (source / "Data").mkdir()
        (source / "Package.strings").write_text(
            '"CFBundleName" = "RunBench"; "CFBundleIdentifier" = "com.example.RunBench";'
        )
        (source / "Info/Startup.xml").write_text('<Startup Exec="$Data$/setup"/>')
        shutil.copy(build / "Benchmarks/zpk_startup_probe", source / "Data/setup")
        with open(source / "Data/noise", "wb") as noise:
            for _ in range(size // 1_000_000):
                noise.write(os.urandom(1_000_000))
        self.bundle = folder / (name + ".app")
        self.file = folder / (name + ".run")
        for output in (self.bundle, self.file):
            subprocess.run([build / "zpkpack", "build", source, "-o", output, *options], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        shutil.rmtree(source)
        self.launcher = self.bundle / "Contents/Linux/Zephyrkit"


def start(program, environment):
    return subprocess.Popen([program], env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL)


def until_setup(program, environment, mark):
    """Seconds to the setup program's first instruction."""
    mark.unlink(missing_ok=True)
    begin = now()
    if start(program, environment).wait() != 0:
        raise SystemExit(f"{program} failed")
    return float(mark.read_text()) - begin


class WindowWatch:
    """Tells of every window that is shown on a display, when it is shown. None is missed, however short it is
    there and however busy the machine is."""

    def __init__(self, environment):
        self._watcher = subprocess.Popen(
            ["stdbuf", "-oL", "xev", "-root", "-event", "substructure", "-event", "property"], env=environment,
            stdout=subprocess.PIPE, text=True)
        self._events = queue.SimpleQueue()
        threading.Thread(target=self._read, daemon=True).start()
        # It watches once it tells of a change that is made for it.
        while self._next("PropertyNotify", 0.1) is None:
            subprocess.run(["xprop", "-root", "-format", "ZPK_WATCHED", "8s", "-set", "ZPK_WATCHED", "1"],
                           env=environment, check=True)

    def _read(self):
        for line in self._watcher.stdout:
            self._events.put((now(), line))

    def _next(self, kind, patience):
        """When the next event of that kind was told, or nothing once there is none for so long."""
        while True:
            try:
                moment, line = self._events.get(timeout=patience)
            except queue.Empty:
                return None
            if line.startswith(kind):
                return moment

    def until_window(self, program, environment):
        """Seconds until the program shows a window."""
        begin = now()
        process = start(program, environment)
        seen = None
        while seen is None:
            has_ended = process.poll() is not None
            seen = self._next("MapNotify", 1)
            if seen is None and has_ended:
                raise SystemExit(f"{program} ended without a window")
        process.wait()
        return seen - begin


def copy(file, target):
    begin = now()
    subprocess.run(["cp", file, target], check=True)
    taken = now() - begin
    target.unlink()
    return taken


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-run-", dir=sys.argv[3] if len(sys.argv) > 3 else "/dev/shm"))
    temporary = folder / "tmp"
    temporary.mkdir(mode=0o700)
    mark = folder / "mark"
    server, display = x_server()
    windows = dict(os.environ, DISPLAY=display, TMPDIR=str(temporary), ZPK_STARTUP_TIME=str(mark))
    terminal = {key: value for key, value in windows.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
    try:
        large = Package(build, folder, "large", LARGE, "--without-windows")
        middle = Package(build, folder, "middle", MIDDLE)
        watch = WindowWatch(windows)
        times = {"app": [], "run": [], "cp": [], "window": []}
        for _ in range(runs):
            times["app"].append(until_setup(large.launcher, terminal, mark))
            times["run"].append(until_setup(large.file, terminal, mark))
            settle(temporary)
            times["cp"].append(copy(large.file, folder / "copy"))
            times["window"].append(watch.until_window(middle.file, windows))
            settle(temporary)
    finally:
        server.terminate()
        server.wait()
        shutil.rmtree(folder)
    median = {name: statistics.median(values) for name, values in times.items()}
    placing = median["run"] - median["app"]
    print(f"run file, payload of 1 GB: {placing:.3f} s above the bundle, cp of the file {median['cp']:.3f} s, "
          f"ratio {placing / median['cp']:.2f}   bar 1.20")
    print(f"run file, payload of 100 MB: first window after {median['window']:.3f} s   bar 0.500")


if __name__ == "__main__":
    main()
