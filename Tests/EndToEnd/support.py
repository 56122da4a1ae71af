# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the tests of whole programs share: packages, launches, X servers."""

import atexit
import contextlib
import functools
import json
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import textwrap
import time
import unittest
import zlib

BUILD = pathlib.Path(os.environ["ZPK_BUILD_DIR"]).resolve()
TEMPLATE = BUILD / "Zephyrkit.app"
STAGING_NAME = "VarnoZPK_TEMP"

# Instrumented programs take memory of their own.
SANITIZED = re.search(r"^ZPK_SANITIZE:\w+=.", (BUILD / "CMakeCache.txt").read_text(), re.MULTILINE) is not None

# What the caller ignores, as a shell lets what it starts in the background, does not end the tests either; but what
# they start finds it as it usually is.
for _number in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP):
    if signal.getsignal(_number) == signal.SIG_IGN:
        signal.signal(_number, lambda *_: None)

# What the packager would not build a package with: the tests look at what the launcher does then.
WRONG_ON_PURPOSE = (
    "# zpkpack: allow exec-missing exec-not-executable exec-bundle no-program unreadable program-processor\n"
    "# zpkpack: allow script-without-interpreter table-missing table-syntax table-encoding placeholder\n"
)

# Writes what it finds at its start to the file that ZPK_TEST_RECORD names, so that a test sees what
# a setup program sees.
RECORDER = textwrap.dedent(
    """\
    #!/usr/bin/env python3
    import json, os, signal, sys
    here = os.path.dirname(os.path.abspath(__file__))
    staging = os.path.dirname(here)
    while os.path.basename(staging) not in ("VarnoZPK_TEMP", ""):
        staging = os.path.dirname(staging)
    record = {
        "program": os.path.abspath(__file__),
        "arguments": sys.argv[1:],
        "folder": os.getcwd(),
        "environment": dict(os.environ),
        "staging": staging,
        "contents": sorted(os.path.relpath(os.path.join(where, name), staging)
                           for where, folders, files in os.walk(staging) for name in folders + files),
        "descriptors": sorted(os.listdir("/proc/self/fd")),
        "blocked": [line for line in open("/proc/self/status") if line.startswith(("SigBlk", "SigIgn"))],
    }
    with open(os.environ["ZPK_TEST_RECORD"], "a") as file:
        file.write(json.dumps(record) + "\\n")
    print("recorder: ran", flush=True)
    sys.exit(int(os.environ.get("ZPK_TEST_STATUS", "0")))
    """
)


# What a bundle carries for the windows: fifty megabytes, which the tests' bundles share.
CARRIED = ("Contents/Frameworks", "Contents/Resources/Licenses")


def link_or_copy(source, destination):
    """Another name for a file that nobody writes to; a file of its own on another file system."""
    try:
        os.link(source, destination)
    except OSError:
        shutil.copy2(source, destination)


@functools.cache
def light_template():
    """The template without what a bundle carries for the windows."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-template-"))
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    carried = {str(TEMPLATE / place) for place in CARRIED}
    shutil.copytree(
        TEMPLATE,
        folder / TEMPLATE.name,
        ignore=lambda where, names: [name for name in names if os.path.join(where, name) in carried],
    )
    return folder / TEMPLATE.name


def carry(bundle):
    """Gives the bundle what the template carries, where the template carries it."""
    for place in CARRIED:
        if (TEMPLATE / place).exists():
            shutil.copytree(TEMPLATE / place, bundle / place, copy_function=link_or_copy)


@functools.cache
def carried_files():
    """What the bundles share."""
    return [path for place in CARRIED for path in (TEMPLATE / place).rglob("*") if not path.is_symlink()]


def last_writes_of_carried_files():
    looks = ((path, path.stat()) for path in carried_files())
    return {str(path): (look.st_mtime_ns, look.st_mode) for path, look in looks}


def write(path, text, mode=None):
    path = pathlib.Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    if isinstance(text, bytes):
        path.write_bytes(text)
    else:
        path.write_text(text, encoding="utf-8")
    if mode is not None:
        path.chmod(mode)
    return path


def odc_archive(members):
    """A portable ASCII CPIO archive of (name, mode, contents) rows, names taken as they stand."""
    archive = b""
    for number, (name, mode, contents) in enumerate([*members, ("TRAILER!!!", 0, b"")], start=1):
        encoded = os.fsencode(name) + b"\0"
        fields = (0, number, mode, 0, 0, 1, 0)
        archive += b"070707" + b"".join(b"%06o" % field for field in fields)
        archive += b"%011o%06o%011o" % (1_600_000_000, len(encoded), len(contents)) + encoded + contents
    return archive


def png_picture(width, height):
    """A PNG picture of one colour."""

    def part(kind, contents):
        return struct.pack(">I", len(contents)) + kind + contents + struct.pack(">I", zlib.crc32(kind + contents))

    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    points = zlib.compress((b"\0" + bytes(width)) * height)
    return b"\x89PNG\r\n\x1a\n" + part(b"IHDR", header) + part(b"IDAT", points) + part(b"IEND", b"")


class PackageTestCase(unittest.TestCase):
    """A test with a folder of its own, a private temporary folder for the launcher, and a record."""

    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-e2e-"))
        self.temporary = self.folder / "tmp"
        self.temporary.mkdir(mode=0o700)
        (self.folder / "runtime").mkdir(mode=0o700)
        self.record_path = self.folder / "record"
        self.source = self.folder / "source"
        (self.source / "Info").mkdir(parents=True)
        (self.source / "Data").mkdir()
        # A name of its own: tests that run side by side must not take each other for a second run.
        self.name = "TestSetup-%d" % os.getpid()
        self.describe_package(self.name)
        self.addCleanup(self._remove_folder)
        self.addCleanup(self._assert_shared_as_before, last_writes_of_carried_files())

    def _assert_shared_as_before(self, before):
        """A launcher of another test may be running on the very files."""
        changed = dict(last_writes_of_carried_files().items() - before.items())
        self.assertEqual(changed, {}, "some test wrote to files that the bundles share")

    def _remove_folder(self):
        outcome = getattr(self, "_outcome", None)
        result = getattr(outcome, "result", None)
        failed = result is not None and any(test is self for test, _ in result.failures + result.errors)
        if failed:
            print("kept:", self.folder, file=sys.stderr)
        else:
            shutil.rmtree(self.folder, ignore_errors=True)

    @contextlib.contextmanager
    def disk(self, options):
        """A file system of its own, mounted in the test's folder; only root can have one."""
        disk = self.folder / "disk"
        disk.mkdir()
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", options, "none", disk], capture_output=True)
        if mounted.returncode != 0:
            self.skipTest("this machine does not let root mount")
        try:
            yield disk
        finally:
            # Who removed something there may not have ended yet.
            wait_until(lambda: subprocess.run(["umount", disk], capture_output=True).returncode == 0, 60)
            disk.rmdir()

    # Packages

    def describe_package(self, name):
        write(
            self.source / "Package.strings",
            f'"CFBundleName" = "{name}";\n"CFBundleIdentifier" = "com.example.{name}";\n' + WRONG_ON_PURPOSE,
        )

    def startup(self, exec_="$Data$/setup", param="--test"):
        write(self.source / "Info/Startup.xml", f'<Startup Exec="{exec_}" Param="{param}"/>\n')

    def recorder(self, relative="setup"):
        return write(self.source / "Data" / relative, RECORDER, 0o755)

    def pack(self, name="TestSetup.app", *arguments, template=None):
        """Makes a package, of another launcher where `template` names one.

        A bundle shares what it carries with the template, unless the arguments say otherwise; a single file
        carries nothing.
        """
        package = self.folder / name
        done = subprocess.run(
            [BUILD / "zpkpack", "build", self.source, "-o", package, "--template", template or light_template(), *arguments],
            capture_output=True,
            text=True,
        )
        self.assertEqual(done.returncode, 0, done.stderr)
        if package.is_dir() and not {"--without-windows", "--frameworks"}.intersection(arguments):
            carry(package)
        return package

    def simple_package(self):
        self.recorder()
        self.startup()
        return self.pack()

    # Launches

    def environment(self, **more):
        """What the launcher is started with; None takes a variable away."""
        env = {
            key: value
            for key, value in os.environ.items()
            if key not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LANGUAGE")
        }
        # Sessions have a runtime folder; without one the toolkit makes its own in the temporary folder.
        env.update(
            TMPDIR=str(self.temporary),
            XDG_RUNTIME_DIR=str(self.folder / "runtime"),
            ZPK_TEST_RECORD=str(self.record_path),
            LC_ALL="C.UTF-8",
        )
        env.update(more)
        return {key: value for key, value in env.items() if value is not None}

    def launch(self, bundle, expect=0, program=None, timeout=60, **env):
        done = subprocess.run(
            [program or bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(**env),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            errors="surrogateescape",
            timeout=timeout,
            cwd=self.folder,
        )
        self.assertEqual(done.returncode, expect, done.stdout + done.stderr)
        self.assert_nothing_left()
        return done

    def records(self):
        if not self.record_path.exists():
            return []
        return [json.loads(line) for line in self.record_path.read_text().splitlines()]

    def record(self):
        records = self.records()
        self.assertEqual(len(records), 1, "the setup program was to run once")
        return records[0]

    def assert_nothing_left(self):
        self.assertEqual(sorted(os.listdir(self.temporary)), [], "something stays in the temporary folder")


def peak_memory_of(command, **settings):
    """Exit status and the most memory, in bytes, that a command or a process of its own took at once."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **settings)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, usage.ru_maxrss * 1024


def has_taken_signals(process):
    """Whether every signal that was sent to the process has come, and what it does is done: each thread waits again."""
    folder = pathlib.Path(f"/proc/{process}")
    if "ShdPnd:\t0000000000000000" not in (folder / "status").read_text():
        return False
    # The first thread hands signals on to another, and is looked at before that one.
    threads = sorted((folder / "task").iterdir(), key=lambda thread: int(thread.name))
    return all("State:\tS" in (thread / "status").read_text() for thread in threads)


@contextlib.contextmanager
def x_server(*, window_manager=False, screen="1280x800x24"):
    """A private X server; gives the value for DISPLAY.

    It may not start afresh when its last client leaves: whoever comes at that moment is refused.
    """
    reader, writer = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writer), "-screen", "0", screen, "-nolisten", "tcp", "-noreset"],
        pass_fds=[writer],
        stderr=subprocess.DEVNULL,
    )
    os.close(writer)
    manager = None
    try:
        with os.fdopen(reader) as pipe:
            display = ":" + pipe.readline().strip()
        if window_manager:
            with tempfile.TemporaryDirectory() as folder:
                begun = os.path.join(folder, "begun")
                manager = subprocess.Popen(
                    ["openbox", "--startup", "touch " + begun],
                    env=dict(os.environ, DISPLAY=display),
                    stdout=subprocess.DEVNULL,
                    stderr=subprocess.DEVNULL,
                )
                # A window that it finds when it begins is never made the active one.
                wait_until(lambda: os.path.exists(begun), 60)
        yield display
    finally:
        for process in (manager, server):
            if process is not None:
                process.terminate()
                process.wait()


def wait_until(condition, seconds):
    """Polls until `condition()` gives something true, and gives that; fails after `seconds`."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError("waited %s s in vain" % seconds)
        time.sleep(0.02)
