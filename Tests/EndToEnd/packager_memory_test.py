# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the packager's commands take of memory, whatever the package: less than 64 MiB."""

import os
import pathlib
import re
import subprocess
import tempfile
import time
import unittest

from packager_case import CommandTestCase, with_processors
from support import BUILD, peak_memory_of, write

# Below the 64 MiB that are promised: a package may be larger than this one.
LIMIT = 40 << 20
PROMISED = 64 << 20
IN_MEMORY = "/dev/shm"
FILES = 50_000
LONG = "n" * 240


class PackagerMemoryTest(CommandTestCase):
    def setUp(self):
        # On a disk so many files take minutes.
        tempfile.tempdir = IN_MEMORY if os.access(IN_MEMORY, os.W_OK) else None
        self.addCleanup(setattr, tempfile, "tempdir", None)
        super().setUp()
        self.fill()
        self.run_zpkpack("build", self.source, "-o", "Made.app", "--template", self.template)

    def fill(self):
        """Many names, which together take 12 MB, in one folder, and a large file."""
        many = self.source / "Data/many"
        many.mkdir()
        folder = os.open(many, os.O_RDONLY)
        for number in range(FILES):
            os.close(os.open(f"{number:07}-{LONG}", os.O_CREAT | os.O_WRONLY, 0o644, dir_fd=folder))
        os.close(folder)
        (self.source / "Data/large").touch()
        os.truncate(self.source / "Data/large", 1 << 30)

    def expect_little(self, *arguments, status=0):
        done, memory = peak_memory_of([BUILD / "zpkpack", *arguments], cwd=self.folder)
        self.assertEqual(done, status, arguments)
        self.assertLess(memory, LIMIT, arguments)

    def test_every_command(self):
        commands = self.run_zpkpack("--help").stdout.decode().split("Subcommands:\n")[1].split("\n\n")[0]
        measured = {
            "new": [["New"]],
            "build": [["source", "-o", "Out.app", "--template", self.template],
                      ["source", "-o", "Out.run", "--template", self.template]],
            "check": [["source"]],
            "list": [["Made.app"], ["--long", "Made.app"], ["--format", "json", "Made.app"], ["Out.run"]],
            "extract": [["Made.app", "-o", "Again"]],
            "verify": [["Made.app"], ["Out.run"]],
            "scramble": [["Made.app/Contents/Resources/Data.datx", "scrambled"]],
            "unscramble": [["scrambled", "plain"]],
        }
        for line in commands.splitlines():
            for arguments in measured.get(line.split()[0], []):
                with self.subTest(line.split()[0], arguments=arguments):
                    self.expect_little(line.split()[0], *arguments)
        # The template is no whole launcher, and the source has no texts.
        for arguments in (["check", "Made.app"], ["check", "Out.run"], ["strings", "source"]):
            self.expect_little(*arguments, status=1)
        self.check_preview()
        self.assertEqual({line.split()[0] for line in commands.splitlines()}, {*measured, "strings", "preview"})

        self.check_order()

    def check_preview(self):
        """Both processes together: the one that draws, and the one that waits for it."""
        command = [BUILD / "zpkpack", "preview", "source", "-o", "Pictures", "--lang", "en"]
        process = subprocess.Popen(command, cwd=self.folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        own = 0
        while True:
            done, status, usage = os.wait4(process.pid, os.WNOHANG)
            if done:
                break
            taken = re.search(r"^VmHWM:\s+(\d+) kB$", pathlib.Path(f"/proc/{process.pid}/status").read_text(), re.M)
            own = int(taken[1]) if taken else own
            time.sleep(0.01)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        self.assertGreater(own, 0)
        self.assertLess((own + usage.ru_maxrss) * 1024, PROMISED)

    def check_order(self):
        """However many names there are."""
        listed = self.run_zpkpack("list", "Made.app").stdout.decode().splitlines()
        many = [name for name in listed if name.startswith("Data/many/")]
        self.assertEqual(many, [f"Data/many/{number:07}-{LONG}" for number in range(FILES)])


class ManyProcessorsTest(CommandTestCase):
    """What is packed at once is bounded by its bytes, not by the number of processors."""

    def setUp(self):
        super().setUp()
        os.truncate(write(self.source / "Data/large", b""), 1 << 30)
        # Each fills a block of its own, and packing a block takes the same whatever is in it.
        for number in range(16):
            os.truncate(write(self.template / f"Contents/Resources/{number}", b""), 4 << 20)

    def test_many_processors_take_no_more(self):
        for name in ("Out.app", "Out.run"):
            done, memory = peak_memory_of(
                [*with_processors(64, self.folder), BUILD / "zpkpack", "build", "source", "-o", name, "--template", self.template],
                cwd=self.folder)
            self.assertEqual(done, 0)
            self.assertLess(memory, PROMISED, name)


class ManyPartsTest(CommandTestCase):
    """Bundles with many files beside their archives: as many as fit into little memory, or a clear word."""

    def setUp(self):
        tempfile.tempdir = IN_MEMORY if os.access(IN_MEMORY, os.W_OK) else None
        self.addCleanup(setattr, tempfile, "tempdir", None)
        super().setUp()

    def fill(self, folder, names):
        folder.mkdir(exist_ok=True)
        for name in names:
            (folder / name).touch()

    def expect_little(self, *arguments, status=0):
        done, memory = peak_memory_of([BUILD / "zpkpack", *arguments], cwd=self.folder)
        self.assertEqual(done, status, arguments)
        self.assertLess(memory, LIMIT, arguments)

    def test_as_many_as_are_taken(self):
        self.fill(self.template / "Contents/Resources/Many", (f"{number:05}-{LONG[:40]}" for number in range(13_000)))
        self.expect_little("build", self.source, "-o", "Made.app", "--template", self.template)
        self.expect_little("build", self.source, "-o", "Made.run", "--template", self.template)
        for package in ("Made.app", "Made.run"):
            self.expect_little("list", package)
            self.expect_little("verify", package)
            self.expect_little("extract", package, "-o", f"{package}.source")
            self.expect_little("check", package, status=1)

    def test_more_are_refused_in_words(self):
        made = self.small_package("Made.app")
        self.fill(made / "Contents/Resources/Many", (f"{number:05}-{LONG[:60]}" for number in range(25_000)))
        for command in (["list", made], ["verify", made], ["extract", made, "-o", "Source"], ["check", made],
                        ["build", self.source, "-o", "Out.app", "--template", made],
                        ["build", self.source, "-o", "Out.run", "--template", made]):
            with self.subTest(command[0]):
                self.expect_little(*command, status=1)
                done = self.run_zpkpack(*command, status=1)
                self.assertIn(b"it holds too many files beside its archives", done.stdout + done.stderr)
        self.assertFalse((self.folder / "Out.app").exists() or (self.folder / "Out.run").exists())


if __name__ == "__main__":
    unittest.main(verbosity=2)
