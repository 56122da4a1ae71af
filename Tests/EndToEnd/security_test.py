# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What Docs/Security.md has an administrator check: each command as it stands there, and what it shows."""

import os
import pathlib
import re
import shutil
import subprocess
import unittest

from support import SANITIZED, PackageTestCase, write, x_server

DOCUMENT = pathlib.Path(__file__).resolve().parents[2] / "Docs/Security.md"
SECTION = re.compile(r"^## What an administrator can check\n(.*?)^## ", re.M | re.S)
ROW = re.compile(r"^\| (?!promise|---)(.*?) \| `(.*?)` \| (.*) \|$", re.M)
CALL = re.compile(r"^(?:\[pid +(\d+)\] )?(\w+)\((.*)\) += (\S+)", re.M)

# Leaves one file, and does nothing that the traces would show.
SETUP = '#!/bin/sh\necho ran > "$TMPDIR/left"\n'


def promises():
    """What is promised: its command, and what is said of its output."""
    section = SECTION.search(DOCUMENT.read_text()).group(1)
    rows = {promise: (command, shown) for promise, command, shown in ROW.findall(section)}
    assert len(rows) == section.count("\n| ") - 1, "a row of another form"
    return rows


@unittest.skipIf(SANITIZED, "instrumented programs cannot be traced")
@unittest.skipUnless(shutil.which("strace"), "strace is not installed")
class AdministratorTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        write(self.source / "Data/setup", SETUP, 0o755)
        self.startup()
        self.bundle = self.pack("X.app", "--without-windows")
        self.rows = promises()

    def of(self, promise):
        """Command and description of the one row whose promise has these words."""
        [row] = [row for name, row in self.rows.items() if promise in name]
        return row

    def shown(self, promise, status=0, **variables):
        """What the promise's command writes, and the words in code of what the document says that it shows."""
        command, told = self.of(promise)
        done = subprocess.run(
            ["sh", "-c", command],
            cwd=self.folder,
            env=self.environment(**variables),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            errors="surrogateescape",
            timeout=120,
        )
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stderr + done.stdout, re.findall(r"`([^`]+)`", told)

    def test_every_promise_is_looked_at_here(self):
        words = ("no network", "nothing runs but", "in a cage", "raises rights", "as it was made", "nothing stays")
        self.assertEqual(len(self.rows), len(words))
        for word in words:
            self.of(word)

    def test_network(self):
        output, told = self.shown("no network")
        calls = CALL.findall(output)
        self.assertEqual([name for _, name, _, _ in calls], told[:2])
        address = told[2].replace("<uid>", str(os.geteuid())).replace("NAME", self.name)
        self.assertIn(address, calls[-1][2])

    def programs_in(self, output):
        calls = [(name, words, result) for _, name, words, result in CALL.findall(output)]
        self.assertEqual({name for name, _, _ in calls}, {"execve"})
        return [re.match(r'"([^"]+)"', words).group(1) for _, words, result in calls if result == "0"]

    def test_programs(self):
        output, told = self.shown("nothing runs but")
        staging = self.temporary / "VarnoZPK_TEMP"
        tool = str(self.bundle / told[0])
        self.assertEqual(
            self.programs_in(output), ["X.app/Contents/Linux/Zephyrkit", tool, tool, str(staging / "Data/setup")]
        )

    def test_programs_with_a_display(self):
        _, told = self.of("nothing runs but")
        loader = re.findall(r"`([^`]+)`", told)[1]
        if not (self.pack("Y.app") / loader).exists():
            self.skipTest("this build shares the machine's libraries")
        command, _ = self.of("nothing runs but")
        with x_server() as display:
            done = subprocess.run(
                ["sh", "-c", command.replace("DISPLAY= WAYLAND_DISPLAY= ", "").replace("X.app", "Y.app")],
                cwd=self.folder,
                env=self.environment(DISPLAY=display),
                capture_output=True,
                text=True,
                timeout=120,
            )
        programs = self.programs_in(done.stderr)
        self.assertEqual(programs[0], "Y.app/Contents/Linux/Zephyrkit")
        self.assertIn(str(self.folder / "Y.app" / loader), programs[1:-1])
        own = f"{self.folder}/Y.app/Contents/"
        self.assertEqual([program for program in programs[1:-1] if not program.startswith(own)], [])

    def test_cage(self):
        output, told = self.shown("in a cage")
        calls = CALL.findall(output)
        tools = {process for process, name, _, _ in calls if name == "seccomp"}
        self.assertEqual(len(tools), 2)
        for tool in tools:
            steps = [(name + "(" + words, result) for process, name, words, result in calls if process == tool]
            self.assertEqual(len(steps), len(told) - 1)
            for word, (step, result) in zip(told[1:], steps):
                self.assertIn(word, step)
                self.assertEqual(result, "0", step)

    def test_rights(self):
        self.assertEqual(self.shown("raises rights")[0], "")
        write(self.bundle / "raised", "", 0o4755)
        self.assertEqual(self.shown("raises rights")[0], "X.app/raised\n")

    def test_manifest(self):
        self.assertEqual(self.shown("as it was made")[0], "")
        changed = "Contents/Resources/UILang/de/ZPKStringTable.def"
        with open(self.bundle / changed, "a") as file:
            file.write(" ")
        output, _ = self.shown("as it was made", status=1)
        self.assertIn(changed + ": FAILED\n", output)

    def test_temporary_folder(self):
        output, _ = self.shown("nothing stays")
        self.assertEqual(output.splitlines()[-1], "left")
        self.assertEqual(os.listdir(self.folder / "own"), ["left"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
