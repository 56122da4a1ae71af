# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The staging folder is the one that the run has made, wherever somebody moves it and whatever takes its place."""

import os
import re
import shutil
import subprocess
import unittest

from support import SANITIZED, STAGING_NAME, PackageTestCase, write, x_server
from windows import Gate

# Waits when it has unpacked that archive; the real tool is not the launcher's child, and must not end for it.
HELD_AFTERWARDS = """#!/bin/sh
env -u ZEPHYRKIT_PARENT "${{0%/*}}/ditto.real" "$@"
status=$?
case $4 in */{archive}) read -r line < '{gate}' ;; esac
exit $status
"""

# Adds a word to the record.
SETUP = '#!/bin/sh\necho {word} >> "$ZPK_TEST_RECORD"\n'

ASKS_FOR_A_DISC = "<U><Conditions><Disc FilePath='a.disc'/></Conditions></U>"

CALL = re.compile(r"^(\d+) +(\w+)\((.*)$", re.M)
TEXT = re.compile(r'"((?:[^"\\]|\\.)*)"')


class MovedStagingFolderTest(PackageTestCase):
    """Somebody moves the folder away while the launcher waits, and leaves something else in its place."""

    def setUp(self):
        super().setUp()
        self.staging = self.temporary / STAGING_NAME
        self.moved = self.temporary / "moved"
        self.gate = Gate(self.folder / "gate")
        write(self.source / "Data/setup", SETUP.format(word="own"), 0o755)
        self.startup()

    def held_after(self, archive):
        bundle = self.pack("X.app", "--without-windows")
        tool = bundle / "Contents/Helpers/ditto"
        tool.rename(tool.with_name("ditto.real"))
        write(tool, HELD_AFTERWARDS.format(archive=archive, gate=self.gate.path), 0o755)
        return bundle

    def plant(self, place):
        """What the launcher would delete, replace, believe or run."""
        program = SETUP.format(word="planted")
        for name in ("Info.dat", "Data.dat", "Data/other"):
            write(place / name, "planted")
        write(place / "Data/setup", program, 0o755)
        write(place / "Info/Startup.xml", '<Startup Exec="$Data$/setup" Param=""/>')
        write(place / "Info/Condition.xml", "<U><TargetItems><ItemInfo DisplayName='x'/></TargetItems></U>")

    def seen(self, place):
        """Everything below, so that any change of it shows."""
        items = [place, *sorted(place.rglob("*"))]
        return [
            (path, path.lstat().st_ino, path.lstat().st_mode, path.lstat().st_mtime_ns)
            + ((path.read_bytes(),) if path.is_file() else ())
            for path in items
        ]

    def launch_and_swap(self, bundle, by_link):
        """Status and standard error of a launch that goes on when the folder is another's."""
        run = subprocess.Popen(
            [bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE,
            text=True,
        )
        self.addCleanup(run.communicate)
        self.addCleanup(run.kill)
        self.gate.wait_reached(60)
        self.staging.rename(self.moved)
        self.assertIn("Info", os.listdir(self.moved))
        planted = self.folder / "precious" if by_link else self.staging
        self.plant(planted)
        if by_link:
            self.staging.symlink_to(planted)
        before = self.seen(planted)
        self.gate.open()
        said = run.communicate(timeout=60)[1]
        self.assertEqual(self.seen(planted), before, said)
        self.assertEqual(self.staging.is_symlink(), by_link)
        self.assertEqual(os.listdir(self.moved), [], "something stays of what the run has unpacked")
        if by_link:
            self.staging.unlink()
        shutil.rmtree(planted)
        self.moved.rmdir()
        return run.returncode, said

    def assert_each_way(self, bundle, status, told, ran=""):
        for by_link in (False, True):
            with self.subTest(by_link=by_link):
                ended, said = self.launch_and_swap(bundle, by_link)
                self.assertEqual(ended, status, said)
                self.assertIn(told, said)
                self.assertEqual(self.record_path.read_text() if self.record_path.exists() else "", ran)
                self.record_path.unlink(missing_ok=True)
                self.assert_nothing_left()

    def test_when_the_description_is_unpacked(self):
        bundle = self.held_after("Info.dat")
        archive = bundle / "Contents/Resources/Data.datx"
        self.assert_each_way(bundle, 0, f"cannot unpack {archive}: {self.staging}: Is no longer in its place\n")

    def test_when_the_payload_is_unpacked(self):
        told = f"cannot start {self.staging}/Data/setup: Its folder is no longer in its place\n"
        self.assert_each_way(self.held_after("Data.dat"), 1, told)

    def test_while_the_setup_program_runs(self):
        write(self.source / "Data/setup", SETUP.format(word="own") + f"read -r line < '{self.gate.path}'\n", 0o755)
        self.assert_each_way(self.pack("X.app", "--without-windows"), 0, "", "own\n")

    def test_before_a_disc_is_asked_for(self):
        write(self.source / "Info/Condition.xml", ASKS_FOR_A_DISC)
        bundle = self.held_after("Info.dat")
        self.assert_each_way(bundle, 0, "")


@unittest.skipIf(SANITIZED, "instrumented programs cannot be traced")
@unittest.skipUnless(shutil.which("strace"), "strace is not installed")
class StagingFolderCallsTest(PackageTestCase):
    """By which paths the launcher's own system calls reach what is in the staging folder; not by its full path."""

    def calls_of(self, bundle, expect, **variables):
        """Name and words of each call that takes a path, of the launcher's own threads."""
        log = self.folder / "strace"
        done = subprocess.run(
            ["strace", "-f", "-s", "4096", "-o", log, "-e", "trace=%file", bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(**variables),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=120,
        )
        self.assertEqual(done.returncode, expect, done.stderr)
        self.assert_nothing_left()
        own = []
        launcher, others = None, set()
        for process, name, words in CALL.findall(log.read_text()):
            launcher = launcher or process
            if process != launcher and name in ("execve", "execveat"):
                others.add(process)
            if process not in others:
                own.append((name, words))
        return own

    def assert_held(self, expected, bundle, expect=0, **variables):
        """From its making to its removal; `expected` are names that are looked at by its descriptor."""
        staging = str(self.temporary / STAGING_NAME)
        calls = self.calls_of(bundle, expect, **variables)
        named = [name for name, words in calls if staging in TEXT.findall(words)]
        made = named.index("mkdir")
        self.assertEqual(named[made : made + 2], ["mkdir", "openat"])
        self.assertEqual(set(named[made + 2 : -1]), {"newfstatat"}, named)
        self.assertEqual(named[-1], "rmdir")
        below = [(name, words) for name, words in calls if staging + "/" in words]
        self.assertEqual(below, [])
        [held] = {
            words.rpartition(" = ")[2] for name, words in calls if name == "openat" and staging in words and "O_PATH" in words
        }
        seen = {text for _, words in calls if words.startswith(held + ",") for text in TEXT.findall(words)}
        self.assertLessEqual(set(expected), seen)

    def pack_light(self):
        return self.pack("X.app", "--without-windows")

    def test_program_that_is_named(self):
        setup = self.source / "Data/Setup.app/Contents"
        write(setup / "Info.plist", "<plist><dict><key>CFBundleExecutable</key><string>run</string></dict></plist>")
        write(setup / "Linux/run", "#!/bin/sh\n", 0o755)
        self.startup("$Data$/Setup.app")
        names = ["Info.dat", "Info/Condition.xml", "Data.dat", "Info/Startup.xml", "Data/Setup.app/Contents/Linux/run"]
        self.assert_held(names, self.pack_light())
        with x_server() as display:
            self.assert_held(names, self.pack("Y.app"), DISPLAY=display)

    def test_program_that_is_found(self):
        write(self.source / "Data/setup", "#!/bin/sh\n", 0o755)
        (self.source / "Info/Startup.xml").symlink_to("../Data/none")
        self.assert_held(["Data/setup", "Data/none"], self.pack_light())

    def test_program_that_does_not_start(self):
        write(self.source / "Data/setup", "#!/no/such/interpreter\n", 0o755)
        self.startup()
        self.assert_held(["Data/setup"], self.pack_light(), expect=1)

    def test_large_archives(self):
        write(self.source / "Data/setup", "#!/bin/sh\n", 0o755)
        for name in ("Info/noise", "Data/noise"):
            write(self.source / name, os.urandom(300_000))
        self.assert_held(["Info.dat", "Data.dat"], self.pack_light())

    def test_question_for_a_disc(self):
        write(self.source / "Info/Condition.xml", ASKS_FOR_A_DISC)
        self.assert_held(["Info/Condition.xml"], self.pack_light())


if __name__ == "__main__":
    unittest.main(verbosity=2)
