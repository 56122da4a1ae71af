# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The packager's command line: what all its commands have in common."""

import os
import pty
import subprocess
import tempfile
import unittest

from support import BUILD

COMMANDS = (
    "build",
    "check",
    "extract",
    "list",
    "new",
    "preview",
    "scramble",
    "strings",
    "unscramble",
    "verify",
)


def run(*arguments, **settings):
    return subprocess.run([BUILD / "zpkpack", *arguments], capture_output=True, **settings)


def run_on_a_terminal(*arguments, **environment):
    """What a terminal gets to see of a run."""
    parent, child = pty.openpty()
    process = subprocess.Popen(
        [BUILD / "zpkpack", *arguments],
        stdin=subprocess.DEVNULL,
        stdout=child,
        stderr=child,
        env={**os.environ, "TERM": "xterm", **environment},
    )
    os.close(child)
    seen = b""
    while True:
        try:
            piece = os.read(parent, 65536)
        except OSError:  # The other end is gone.
            break
        if not piece:
            break
        seen += piece
    os.close(parent)
    process.wait()
    return seen


class CommandLineTest(unittest.TestCase):
    def test_every_command_tells_how_it_is_used_with_an_example(self):
        for command in COMMANDS:
            with self.subTest(command):
                done = run(command, "--help")
                self.assertEqual((done.returncode, done.stderr), (0, b""))
                self.assertIn(f"Example:\n  zpkpack {command} ".encode(), done.stdout)
                for option in ("--help", "--version", "--quiet", "--verbose"):
                    self.assertIn(option.encode(), done.stdout)
                # The library's own words for what it makes of the options.
                self.assertNotRegex(done.stdout, rb"Option Group|{false}|--(output|template) TEXT")
                self.assertRegex(done.stdout, rb"Usage: zpkpack %s \[OPTIONS\] \[?[A-Z]+" % command.encode())
        listed = run("--help").stdout.decode().split("Subcommands:\n")[1].split("\n\n")[0]
        self.assertEqual(tuple(line.split()[0] for line in listed.splitlines()), COMMANDS)

    def test_the_version_needs_no_other_argument(self):
        for arguments in ([], *([command] for command in COMMANDS)):
            done = run(*arguments, "--version")
            self.assertEqual((done.returncode, done.stderr), (0, b""), arguments)
            self.assertRegex(done.stdout, rb"\Azpkpack \d+\.\d+\.\d+\n\Z")

    def test_wrong_usage_is_told_apart_from_failure(self):
        rows = [
            ([], 2, b"a command is required"),
            (["check"], 2, b"PACKAGE is required"),
            (["check", "S", "--explain", "archive"], 2, b"excludes"),
            (["build"], 2, b"SOURCE is required"),
            (["build", "S", "T", "-o", "X.app"], 2, b"not expected: T"),
            (["build", "S", "-o"], 2, b"--output"),
            (["-q", "-v", "build", "S", "-o", "X.app"], 2, b"excludes"),
            (["build", "S", "-o", "X.zip"], 2, b"the name of a package ends in .app, or in .run for one file"),
            (["build", "/nowhere", "-o", "X.app"], 1, b"/nowhere"),
        ]
        for arguments, status, expected in rows:
            done = run(*arguments)
            self.assertEqual((done.returncode, done.stdout), (status, b""), arguments)
            self.assertIn(expected, done.stderr)

    def test_an_unknown_name_is_answered_with_the_nearest_known_one(self):
        rows = [
            (["biuld", "S", "-o", "X.app"], b"there is no command biuld; did you mean build?"),
            (["Build", "S"], b"there is no command Build; did you mean build?"),
            (["frobnicate"], b"there is no command frobnicate\n"),
            (["build", "S", "--outptu", "X.app"], b"there is no option --outptu; did you mean --output?"),
            (["build", "S", "--outptu=X.app"], b"there is no option --outptu; did you mean --output?"),
            (["--quite", "build", "S", "-o", "X.app"], b"there is no option --quite; did you mean --quiet?"),
            (["build", "--nothing-like-it"], b"there is no option --nothing-like-it\n"),
        ]
        for arguments, expected in rows:
            done = run(*arguments)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertIn(expected, done.stderr)

    def test_every_command_answers_alike(self):
        # What each needs for its work; none of it is there.
        needed = {
            "build": ["nowhere", "-o", "Made.app"], "check": ["nowhere"], "extract": ["nowhere", "-o", "made"],
            "list": ["nowhere"], "new": ["no/such/folder"], "preview": ["nowhere", "-o", "made"],
            "scramble": ["nowhere", "made"], "strings": ["nowhere"], "unscramble": ["nowhere", "made"],
            "verify": ["nowhere"],
        }
        self.assertEqual(tuple(sorted(needed)), COMMANDS)
        for command, arguments in needed.items():
            with self.subTest(command), tempfile.TemporaryDirectory() as folder:
                failed = run(command, *arguments, cwd=folder)
                self.assertEqual(failed.returncode, 1, failed)
                for detail in ("--quiet", "--verbose", "-q", "-v"):
                    again = run(command, *arguments, detail, cwd=folder)
                    self.assertEqual((again.returncode, again.stdout), (1, failed.stdout), detail)
                    # A failure is told to who wants quiet, too.
                    self.assertEqual(bool(again.stderr), bool(failed.stderr))
                self.assertEqual(os.listdir(folder), [])
                wrong = run(command, *arguments, "--quite")
                self.assertEqual((wrong.returncode, wrong.stdout), (2, b""))
                self.assertIn(b"there is no option --quite; did you mean --quiet?", wrong.stderr)
                self.assertIn(f"try zpkpack {command} --help".encode(), wrong.stderr)
                near = run(command + "x", *arguments)
                self.assertEqual(near.returncode, 2)
                self.assertIn(f"there is no command {command}x; did you mean {command}?".encode(), near.stderr)
                self.assertNotRegex(run_on_a_terminal(command, *arguments, NO_COLOR="1"), rb"\x1b\[[0-9;]*m")
                if failed.stderr:
                    self.assertIn(b"\x1b[1;31merror:", run_on_a_terminal(command, *arguments))

    def test_arguments_cannot_command_the_terminal(self):
        for arguments in (["\x1b[2J\nx"], ["build", "--\x1b[2J"], ["build", "\x1b[2J\u202e", "-o", "X.app"]):
            done = run(*arguments)
            self.assertNotIn(b"\x1b", done.stdout + done.stderr)
            self.assertNotIn("\u202e".encode(), done.stderr)

    def test_colours_are_for_terminals_and_for_who_wants_them(self):
        self.assertIn(b"\x1b[", run_on_a_terminal("nothing"))
        self.assertNotIn(b"\x1b", run_on_a_terminal("nothing", NO_COLOR="1"))
        self.assertNotIn(b"\x1b", run_on_a_terminal("nothing", TERM="dumb"))
        self.assertNotIn(b"\x1b", run("nothing").stderr)

    def test_a_result_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([BUILD / "zpkpack", "--help"], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"standard output: No space left on device", done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
