#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Start of the launcher to the first instruction of the setup program, beside an empty Qt application.

usage: startup.py BUILD-FOLDER [RUNS]
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


def make_bundle(build, folder):
    source = folder / "source"
    (source / "Info").mkdir(parents=True)
    (source / "Data").mkdir()
    (source / "Package.strings").write_text(
        '"CFBundleName" = "StartupBench"; "CFBundleIdentifier" = "com.example.StartupBench";'
    )
    (source / "Info/Startup.xml").write_text('<Startup Exec="$Data$/setup"/>')
    shutil.copy(build / "Benchmarks/zpk_startup_probe", source / "Data/setup")
    (source / "Data/noise").write_bytes(os.urandom(PAYLOAD))
    bundle = folder / "StartupBench.app"
    subprocess.run([build / "zpkpack", "build", source, "-o", bundle], check=True, stdout=subprocess.DEVNULL)
    return bundle / "Contents/Linux/Zephyrkit"


def seconds_to_mark(program, mark, environment):
    mark.unlink(missing_ok=True)
    start = time.clock_gettime(time.CLOCK_MONOTONIC)
    subprocess.run(
        [program], env=environment, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
    )
    return float(mark.read_text()) - start


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 15
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-startup-"))
    server, display = x_server()
    try:
        temporary = folder / "tmp"
        temporary.mkdir(mode=0o700)
        mark = folder / "mark"
        environment = dict(
            os.environ,
            DISPLAY=display,
            TMPDIR=str(temporary),
            XDG_RUNTIME_DIR=str(folder),
            ZPK_STARTUP_TIME=str(mark),
        )
        terminal = {key: value for key, value in environment.items() if key != "DISPLAY"}
        launcher = make_bundle(build, folder)
        peer = build / "Benchmarks/zpk_empty_qt_application"
        rows = {"window": [], "terminal": [], "empty": []}
        for _ in range(runs):
            rows["window"].append(seconds_to_mark(launcher, mark, environment) - PAUSE)
            rows["empty"].append(seconds_to_mark(peer, mark, environment))
            rows["terminal"].append(seconds_to_mark(launcher, mark, terminal) - PAUSE)
        window, terminal, empty = (statistics.median(rows[name]) for name in ("window", "terminal", "empty"))
        print(f"start-up, launcher with a window   {window:.3f} s   bar 0.150 s")
        print(f"start-up, empty Qt application     {empty:.3f} s")
        print(f"start-up, launcher above the peer  {window - empty:+.3f} s   bar +0.050 s")
        print(f"start-up, launcher on the terminal {terminal:.3f} s")
    finally:
        server.terminate()
        server.wait()
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
