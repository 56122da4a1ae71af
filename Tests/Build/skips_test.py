# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""script/check-skips on reports of ctest: what may be skipped, and what may not."""

import os
import pathlib
import subprocess
import tempfile
import unittest
from xml.sax.saxutils import escape, quoteattr

ROOT = pathlib.Path(os.environ["ZPK_SOURCE_DIR"])

GOOGLE = "[ RUN      ] %s\nTests/A.cpp:1: Skipped\n%s\n[  SKIPPED ] 1 test.\n"
SANITIZED = "ArchiveMemoryTest.Any", "the sanitizer takes memory of its own"


class SkipsTest(unittest.TestCase):
    def check(self, build, name, output, is_skipped=True, **variables):
        """The exit status and the lines for a report of one test."""
        with tempfile.TemporaryDirectory() as folder:
            report = pathlib.Path(folder, build, "tests.xml")
            report.parent.mkdir()
            skipped = "<skipped/>" if is_skipped else ""
            report.write_text(
                f"<testsuite><testcase name={quoteattr(name)}>{skipped}"
                f"<system-out>{escape(output)}</system-out></testcase></testsuite>"
            )
            environment = {key: value for key, value in os.environ.items() if key != "CI"}
            done = subprocess.run(
                [ROOT / "script/check-skips", report], env={**environment, **variables}, capture_output=True, text=True
            )
            self.assertEqual(done.stderr, "")
            return done.returncode, done.stdout.splitlines()

    def test_a_listed_one_may_be_skipped_where_its_condition_holds(self):
        test, reason = SANITIZED
        output = GOOGLE % (test, reason)
        self.assertEqual(self.check("asan", test, output), (0, ["asan: 1 skipped"]))
        line = f"skipped, and not allowed to be: {test}: {reason}"
        self.assertEqual(self.check("release", test, output), (1, [line, "release: 1 skipped"]))

    def test_another_reason_is_another_skip(self):
        test = SANITIZED[0]
        self.assertEqual(self.check("asan", test, GOOGLE % (test, "no mood"))[0], 1)
        self.assertEqual(self.check("asan", test, "nothing said")[0], 1)

    def test_what_a_machine_may_lack_is_there_where_ci_is_set(self):
        test, reason = "DamagedArchiveTest.Any", "bzip2 is not installed"
        self.assertEqual(self.check("release", test, GOOGLE % (test, reason))[0], 0)
        self.assertEqual(self.check("release", test, GOOGLE % (test, reason), CI="1")[0], 1)

    def test_each_test_of_a_python_class_counts(self):
        group = "EndToEnd.BareMachineTest"
        rows = "test_a (__main__.BareMachineTest.test_a) ... %s\ntest_b (__main__.BareMachineTest.test_b) ... ok\n"
        one = rows % "skipped 'weston is not installed'" + "\nOK (skipped=1)\n"
        self.assertEqual(self.check("release", group, one)[0], 0)
        other = rows % "skipped 'no mood'" + "\nOK (skipped=1)\n"
        line = f"skipped, and not allowed to be: {group}.test_a: no mood"
        self.assertEqual(self.check("release", group, other), (1, [line, "release: 1 skipped"]))
        self.assertEqual(self.check("release", group, one.replace("=1", "=2"))[0], 1, "one is not seen")
        self.assertEqual(self.check("release", group, rows % "ok" + "\nOK\n", is_skipped=False), (0, ["release: 0 skipped"]))


if __name__ == "__main__":
    unittest.main(verbosity=2)
