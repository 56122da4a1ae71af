# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the tests in other systems' folders share: a room of the root folder that ZPK_TEST_ROOT names ("empty" for
none at all), the packages to open in it, and what a run has left there."""

import contextlib
import os
import pathlib
import re
import shutil
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).parent
# What the tests of whole programs share.
sys.path.append(str(HERE.parent / "EndToEnd"))

from support import wait_until  # noqa: E402
from windows import Gate  # noqa: E402

from room import PERSON, READ_ONLY, Room, impossible, tree

PACKAGES = pathlib.Path(os.environ["ZPK_TEST_PACKAGES"]).resolve()
ROOT = os.environ["ZPK_TEST_ROOT"]
SKIPPED = 77

LAUNCHER = "/packages/Plain.app/Contents/Linux/Zephyrkit"
HELD = "/packages/Held.app/Contents/Linux/Zephyrkit"
OUTPUT = "".join("%d%%  Extracting installation files…\n" % percent for percent in (10, 40, 100)) + "setup: ran\n"

# Where a search path, a list, a format or a loader takes a part of a name for something else; and one that is no text.
ODD_PLACES = ("a b:c;d$LIB${ORIGIN}%s", "a\nb", os.fsdecode(b"\xff\xfe"))

# What a desktop of another toolkit's version, or a program that brings its own libraries, leaves in the environment.
HOSTILE = {
    "LD_LIBRARY_PATH": "/usr/lib/x86_64-linux-gnu:/lib/x86_64-linux-gnu:/nowhere",
    "LD_BIND_NOW": "1",
    "QT_PLUGIN_PATH": "/usr/lib/x86_64-linux-gnu/qt6/plugins:/usr/lib/x86_64-linux-gnu/qt5/plugins",
    "QT_QPA_PLATFORMTHEME": "gtk3",
    "QT_STYLE_OVERRIDE": "kvantum",
    "QT_IM_MODULE": "ibus",
    "QT_LOGGING_RULES": "*=true",
    "QT_DEBUG_PLUGINS": "1",
    "QT_SCALE_FACTOR": "nonsense",
    "FONTCONFIG_FILE": "/nowhere/fonts.conf",
    "FONTCONFIG_PATH": "/nowhere",
    "GTK_MODULES": "nowhere",
    "LOCPATH": "/nowhere",
    "GCONV_PATH": "/nowhere",
}
FONTS = ("/usr/share/fonts", "/usr/local/share/fonts", "/etc/fonts")
KEYBOARDS = ("/usr/share/X11/xkb",)


class AnywhereCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-anywhere-"))
        # Its parts are looked into by another user.
        self.folder.chmod(0o755)
        self.addCleanup(self._remove_folder)
        self._rooms = 0

    def _remove_folder(self):
        result = getattr(getattr(self, "_outcome", None), "result", None)
        if result is not None and any(test is self for test, _ in result.failures + result.errors):
            print("kept:", self.folder, file=sys.stderr)
        else:
            shutil.rmtree(self.folder)

    def room(self, *mounts, **options):
        """A new room, with the packages in /packages, to be read."""
        self._rooms += 1
        room = Room(
            self.folder / ("room-%d" % self._rooms),
            root_folder(),
            mounts=[(PACKAGES, "/packages", READ_ONLY), *mounts],
            **options,
        )
        self.addCleanup(room.close)
        return room

    def need_shell(self):
        if ROOT == "empty":
            self.skipTest("there is no program in the empty root")

    def install(self, room, program=LAUNCHER, *, variables=None, **options):
        """Opens the package; checks that it was installed and that nothing else is there afterwards."""
        before = self.traces(room)
        environment = person(**(variables or {}))
        process, status = room.run(program, environment=environment, **options)
        said = process.errors() + process.output()
        self.assertEqual(status, 0, said)
        self.assert_installed(room, environment, said)
        room.settle()
        self.assertEqual(self.traces(room), before)
        return process

    def assert_installed(self, room, environment, said=""):
        record = {path.name: path.read_bytes() for path in room.record.iterdir() if path.is_file()}
        self.assertEqual(record.get("runs"), b"ran\n", said)
        self.assertEqual(record["installed"], (PACKAGES / "Plain/Data/product").read_bytes())
        self.assertEqual(record["arguments"].split(b"\0")[1:-1], [b"--anywhere"])
        found = record["environment"]
        if any(entry.startswith("DISPLAY=") for entry in environment):
            # A window manager is told of the program's start by that name.
            found = re.sub(rb"DESKTOP_STARTUP_ID=[^\0]+\0$", b"", found)
        self.assertEqual(found, b"".join(os.fsencode(entry) + b"\0" for entry in environment))
        for name in ("runs", "installed", "arguments", "environment", "folder"):
            (room.record / name).unlink()

    def assert_installs_from_odd_places(self, *mounts, **variables):
        places = [(PACKAGES / "Plain.app", "/%s/Plain.app" % place, READ_ONLY) for place in ODD_PLACES]
        room = self.room(*places, *mounts)
        for place in ODD_PLACES:
            with self.subTest(place):
                done = self.install(room, "/%s/Plain.app/Contents/Linux/Zephyrkit" % place, variables=variables)
                self.assertNotIn("no windows", done.errors())

    def assert_refused(self, room, program, expected, **variables):
        """Nothing is installed or left behind; what was told of it."""
        self.make_cache(room)
        before = self.traces(room)
        done, status = room.run(program, environment=person(**variables))
        self.assertEqual(status, expected)
        self.assertEqual(done.output(), "")
        self.assertNotEqual(done.complaints(), [])
        self.assertEqual(list(room.record.iterdir()), [])
        room.settle()
        self.assertEqual(self.traces(room), before)
        return "\n".join(done.complaints())

    @staticmethod
    def make_cache(room):
        """The folder that a person who has used a desktop has."""
        cache = room.home / ".cache"
        cache.mkdir(mode=0o700)
        if os.geteuid() == 0:
            os.chown(cache, room.user, room.user)

    @staticmethod
    def traces(room):
        """What is in the folders that a person may write to, but for the person's own temporary folder."""
        found = {name: tree(getattr(room, name)) for name in ("temporary", "home", "runtime")}
        found["temporary"].pop("com.varno.zephyrkit-%d" % room.user, None)
        return found


class HeldRun:
    """A package whose progress window stays at 40 percent until the run is finished."""

    def __init__(self, case, room, **variables):
        self._case = case
        self._room = room
        self._before = case.traces(room)
        self._gate = Gate(room.record / "gate")
        self._environment = person(**variables)
        self.process = room.start(HELD, environment=self._environment)
        self.wait_until(self._reached)

    def _reached(self):
        with contextlib.suppress(AssertionError):
            self._gate.wait_reached(0)
            return True
        return False

    def wait_until(self, condition):
        """Fails when the package ends first, or after a minute."""

        def met():
            if self.process.ended():
                raise AssertionError("it ended with %s: %s" % (self.process.wait(), self.process.complaints()))
            return condition()

        return wait_until(met, 60)

    def finish(self):
        """Lets it go on to its end; checks that it was installed and that nothing else is there afterwards."""
        self._gate.open()
        self._case.assertEqual(self.process.wait(), 0, self.process.errors())
        (self._room.record / "gate").unlink()
        self._case.assert_installed(self._room, self._environment)
        self._room.settle()
        self._case.assertEqual(self._case.traces(self._room), self._before)
        self._case.assertNotIn("no windows", self.process.errors())


def person(**variables):
    """The environment of somebody at a terminal; a variable that is None is not in it."""
    given = {
        "HOME": "/home/person",
        "LANG": "C.UTF-8",
        "PATH": "/usr/bin:/bin",
        "USER": "person",
        "XDG_RUNTIME_DIR": "/run/user/%d" % PERSON,
        "ZPK_TEST_RECORD": "/record",
        **variables,
    }
    return ["%s=%s" % (name, value) for name, value in given.items() if value is not None]


def root_folder():
    return None if ROOT == "empty" else pathlib.Path(os.environ["ZPK_TEST_ROOTS"]) / ROOT


def main():
    """Runs the tests of the program, or says why there are none."""
    folder = root_folder()
    reason = "there is no root folder %s" % ROOT if folder and not folder.is_dir() else impossible()
    if reason:
        print("skipped:", reason)
        # Where this must not be, it is a failure.
        sys.exit(1 if os.environ.get("CI") else SKIPPED)
    unittest.main(verbosity=2)
