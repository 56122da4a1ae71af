# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the packager leaves behind where it cannot come to its end: signals at known places, and full
disks."""

import os
import pathlib
import shutil
import signal
import subprocess
import unittest

from packager_case import CommandTestCase
from support import BUILD, write

ROOT = pathlib.Path(__file__).resolve().parents[2]


class HalfWayTestCase(CommandTestCase):
    """Whatever is made is made whole, or not at all."""

    def signalled(self, call, number, *arguments):
        """The command gets the signal when it first makes that system call; what it starts is left alone."""
        done = subprocess.run(
            ["strace", "-qq", "-o", "/dev/null", "-e", f"trace={call}"]
            + ["-e", f"inject={call}:signal={int(number)}:when=1", BUILD / "zpkpack", *arguments],
            cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
        self.assertEqual(done.returncode, -number, done.stderr)

    def expect_nothing_after_signals(self, *arguments):
        """While the process waits for the one that makes it all."""
        before = self.tree(self.folder)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            self.signalled("poll", number, *arguments)
            self.assertEqual(self.tree(self.folder), before, number)
        self.signalled("poll", signal.SIGKILL, *arguments)
        left = [row for row in self.tree(self.folder) if "/.zpk-" not in "/" + row[0]]
        self.assertEqual(left, before)
        # Whoever works there next removes what was left.
        self.run_zpkpack(*arguments)

    def expect_all_after_signals(self, *arguments):
        """When what was made is put in its place, it is too late to ask for an end."""
        self.signalled("renameat2", signal.SIGTERM, *arguments)
        self.assertEqual([row for row in self.tree(self.folder) if "/.zpk-" in "/" + row[0]], [])

    def expect_nothing_on_full_disks(self, disk, expected, *arguments):
        before = self.tree(disk)
        done = self.run_zpkpack(*arguments, status=1)
        self.assertIn(b"No space left on device", done.stderr)
        self.assertIn(expected, done.stderr)
        self.assertEqual(done.stdout, b"")
        self.assertEqual(self.tree(disk), before)


class ExtractEndsTest(HalfWayTestCase):
    def test_a_signal_leaves_nothing(self):
        package = self.small_package("Out.app")
        self.expect_nothing_after_signals("extract", package, "-o", "Made")
        self.expect_all_after_signals("extract", package, "-o", "Second")
        self.assertEqual(self.tree(self.folder / "Second"), self.tree(self.folder / "Made"))

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_leaves_nothing(self):
        write(self.source / "Data/noise", os.urandom(3_000_000))
        write(self.source / "UILang/Languages.xml", '<a FallBackCode="en"><Language Code="en"/></a>')
        shutil.copytree(ROOT / "Resources/UILang/en", self.source / "UILang/en")
        package = self.small_package("Out.run")
        for size, expected in ((1_000_000, b"Data"), (8192, b"")):
            with self.subTest(size), self.disk(f"size={size}") as disk:
                self.expect_nothing_on_full_disks(disk, expected, "extract", package, "-o", disk / "Made")


class ImportEndsTest(HalfWayTestCase):
    def setUp(self):
        super().setUp()
        for code in ("en", "de"):
            shutil.copytree(ROOT / "Resources/UILang" / code, self.source / "UILang" / code)
        write(self.source / "UILang/Languages.xml",
              '<a FallBackCode="en"><Language Code="en"/><Language Code="de"/></a>\n')
        self.run_zpkpack("strings", "source", "--export-po", "po")
        path = self.folder / "po/de.po"
        text = path.read_text()
        write(path, text.replace('msgid "OK"\nmsgstr "OK"', 'msgid "OK"\nmsgstr "Gut"'))
        self.assertNotEqual(path.read_text(), text)

    def test_a_signal_leaves_the_tables_as_they_were(self):
        table = self.source / "UILang/de/ZPKStringTable.def"
        old = table.read_text()
        self.expect_nothing_after_signals("strings", "source", "--import-po", "po")
        new = table.read_text()
        self.assertEqual(new, old.replace('"ZPKString_OK" = "OK"', '"ZPKString_OK" = "Gut"'))
        write(table, old)
        self.expect_all_after_signals("strings", "source", "--import-po", "po")
        self.assertEqual(table.read_text(), new)

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_leaves_the_tables_as_they_were(self):
        with self.disk("size=100k") as disk:
            shutil.copytree(self.source, disk / "source")
            room = os.statvfs(disk)
            with open(disk / "filler", "wb") as file:
                file.write(bytes(max(0, room.f_bavail * room.f_frsize - 8192)))
            self.expect_nothing_on_full_disks(disk, b"", "strings", disk / "source", "--import-po", "po")


if __name__ == "__main__":
    unittest.main(verbosity=2)
