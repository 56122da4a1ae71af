# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What fixed jobs cost beside what they cost before: processor instructions, and system calls for each file.

Counted and not timed, so that a busy machine gives the same. `counts.json` keeps the numbers; ZPK_TEST_WRITE=1 writes
it anew, for a change that is worth what it costs, or that costs less.
"""

import gzip
import json
import os
import pathlib
import random
import re
import subprocess
import tempfile
import unittest

from support import BUILD, PackageTestCase, odc_archive, write

KEPT = pathlib.Path(__file__).with_name("counts.json")
TOLERANCE = 0.05
DITTO = BUILD / "Zephyrkit.app/Contents/Helpers/ditto"
# A process that sees no others.
ALONE = ["unshare", "--map-current-user", "--pid", "--fork", "--mount-proc"]
# A thread that waits or a table that grows makes these, not a file.
NOT_FOR_A_FILE = {"futex", "mmap", "munmap", "mprotect", "madvise", "brk", "total"}


def fill(folder, files, size):
    """The same files each time, of text that packs to about a third, ten folders of them."""
    numbers = random.Random(1)
    words = [b"%x" % numbers.getrandbits(24) for _ in range(2000)]
    for number in range(files):
        text = b" ".join(numbers.choices(words, k=size // 5))[:size]
        write(folder / f"folder{number % 10}" / f"file{number}", text)


class CountsTestCase(PackageTestCase):
    section = ""

    def expect(self, name, counted, same):
        """`same` compares with what is kept of that name."""
        kept = json.loads(KEPT.read_text())
        if os.environ.get("ZPK_TEST_WRITE") == "1":
            kept[self.section][name] = counted
            KEPT.write_text(json.dumps(kept, indent=2, sort_keys=True) + "\n")
        else:
            before = kept[self.section].get(name)
            self.assertIsNotNone(before, f"nothing is kept of {name}")
            self.assertTrue(same(before, counted), f"{name}: {counted}, and it was {before}")

    def packed(self, tree):
        archive = self.folder / "own.gz"
        subprocess.run([DITTO, "-c", "-z", "-rsrc", "--keepParent", tree, archive], check=True)
        return archive

    def new_source(self, files, size):
        """What a vendor begins with, and so many files."""
        source = self.folder / f"source{files}"
        subprocess.run([BUILD / "zpkpack", "new", source], check=True, capture_output=True)
        fill(source / "Data", files, size)
        return source

    def destination(self):
        folder = self.folder / "unpacked"
        subprocess.run(["rm", "-rf", folder], check=True)
        folder.mkdir()
        return folder


class InstructionsTest(CountsTestCase):
    section = "instructions"

    def setUp(self):
        super().setUp()
        if not re.search(r"^flags.* avx2 ", pathlib.Path("/proc/cpuinfo").read_text(), re.MULTILINE):
            self.skipTest("other instructions are taken where the processor has no AVX2")
        if subprocess.run([*ALONE, "true"], capture_output=True).returncode != 0:
            self.skipTest("this machine does not let its users have name spaces")

    def expect_instructions(self, name, command, **settings):
        """Of the command's own process, not of those that it starts; it sees no others, whose number varies."""
        logs = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        done = subprocess.run(
            [*ALONE, "valgrind", "--tool=callgrind", "--vgdb=no", "--callgrind-out-file=/dev/null",
             f"--log-file={logs}/%p", *command],
            stdin=subprocess.DEVNULL, capture_output=True, timeout=300, **settings,
        )
        self.assertEqual(done.returncode, 0, done.stderr)
        counts = re.findall(r"Collected : (\d+)", "".join(log.read_text() for log in logs.iterdir()))
        self.assertEqual(len(counts), 1, counts)
        self.expect(name, int(counts[0]), lambda before, now: abs(now - before) <= TOLERANCE * before)

    def test_archives(self):
        tree = self.folder / "tree"
        fill(tree, 300, 8000)
        pack = [DITTO, "-c", "-z", "-rsrc", "--keepParent", tree]
        self.expect_instructions("pack", [*pack, self.folder / "counted.gz"])
        own = self.packed(tree)
        self.expect_instructions("unpack our own", [DITTO, "-x", "-z", "--rsrc", own, self.destination()])
        members = [(os.fspath(path.relative_to(self.folder)), 0o100644, path.read_bytes())
                   for path in sorted(tree.rglob("file*"))]
        foreign = write(self.folder / "foreign.gz", gzip.compress(odc_archive(members), 6, mtime=0))
        self.expect_instructions("unpack any", [DITTO, "-x", "-z", "--rsrc", foreign, self.destination()])

    def test_packager(self):
        self.source = self.new_source(2000, 100)
        self.expect_instructions("check a source", [BUILD / "zpkpack", "check", self.source])
        self.expect_instructions("list a package", [BUILD / "zpkpack", "list", self.pack()])

    def test_launch(self):
        write(self.source / "Data/setup", "#!/bin/sh\nexit 0\n", 0o755)
        self.startup()
        fill(self.source / "Data", 200, 4000)
        launcher = self.pack() / "Contents/Linux/Zephyrkit"
        environment = {"HOME": str(self.folder), "TMPDIR": str(self.temporary), "PATH": "/usr/bin:/bin"}
        self.expect_instructions("launch on the terminal", [launcher], env=environment)


class SystemCallsTest(CountsTestCase):
    """So few bytes that no file lies in two blocks of an archive."""

    section = "system calls for a file"

    def calls_of(self, command):
        table = self.folder / "calls"
        subprocess.run(["strace", "-f", "-c", "-U", "name,calls", "-o", table, *command], check=True)
        rows = (line.split() for line in table.read_text().splitlines())
        return {row[0]: int(row[1]) for row in rows if len(row) == 2 and row[1].isdigit()}

    def expect_calls(self, name, command_for):
        """Of each file more, between a hundred and three hundred of them."""
        few, many = (self.calls_of(command_for(files)) for files in (100, 300))
        counted = {call: (many[call] - few.get(call, 0)) / 200 for call in sorted(many) if call not in NOT_FOR_A_FILE}
        self.expect(name, {call: count for call, count in counted.items() if count != 0}, dict.__eq__)

    def tree(self, files):
        tree = self.folder / f"tree{files}"
        if not tree.exists():
            fill(tree, files, 500)
        return tree

    def test_pack(self):
        self.expect_calls("pack", lambda files: [DITTO, "-c", "-z", "-rsrc", "--keepParent", self.tree(files),
                                                 self.folder / "counted.gz"])

    def test_unpack(self):
        self.expect_calls("unpack", lambda files: [DITTO, "-x", "-z", "--rsrc", self.packed(self.tree(files)),
                                                   self.destination()])

    def test_check(self):
        self.expect_calls("check", lambda files: [BUILD / "zpkpack", "check", self.new_source(files, 500)])


if __name__ == "__main__":
    unittest.main(verbosity=2)
