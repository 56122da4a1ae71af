# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""How the packager shows how far it has come: on a terminal, and where there is none."""

import contextlib
import fcntl
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

from packager_case import CommandTestCase
from support import BUILD

WIPE = b"\r\x1b[K"


class PackagerProgressTest(CommandTestCase):
    def setUp(self):
        super().setUp()
        # Packing it takes seconds; no test waits for its end.
        with open(self.source / "Data/large", "wb") as file:
            file.truncate(7 << 30)

    @contextlib.contextmanager
    def build(self, messages, *arguments, **environment):
        process = subprocess.Popen(
            [BUILD / "zpkpack", "build", self.source, "-o", "Out.app", "--template", self.template, *arguments],
            cwd=self.folder,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=messages,
            env={
                **{key: value for key, value in os.environ.items() if key != "NO_COLOR"},
                "TERM": "xterm",
                **environment,
            },
        )
        os.close(messages)
        try:
            yield process
        finally:
            process.kill()
            process.wait()

    @contextlib.contextmanager
    def terminal(self, columns=80):
        parent, child = pty.openpty()
        self.resize(parent, columns)
        try:
            yield parent, child
        finally:
            os.close(parent)

    def resize(self, terminal, columns):
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))

    def read_until(self, source, isEnough, seen=b""):
        end = time.monotonic() + 60
        while not isEnough(seen):
            ready, _, _ = select.select([source], [], [], max(0, end - time.monotonic()))
            self.assertTrue(ready, b"waited in vain after " + seen)
            piece = os.read(source, 65536)
            self.assertTrue(piece, b"it ended after " + seen)
            seen += piece
        return seen

    def read_to_end(self, source):
        seen = b""
        with contextlib.suppress(OSError):  # The other end of a terminal is gone.
            while piece := os.read(source, 65536):
                seen += piece
        return seen

    def texts(self, seen):
        """What stood in the line, one after the other, without colours; the last may be cut short."""
        return [re.sub(rb"\x1b\[[0-9;]*m", b"", text) for text in seen.split(WIPE)[1:-1]]

    def test_a_terminal_has_one_bar_in_place_which_goes_when_the_work_is_interrupted(self):
        with self.terminal() as (terminal, child), self.build(child) as process:
            seen = self.read_until(terminal, lambda text: len(self.texts(text)) >= 4)
            process.send_signal(signal.SIGTERM)
            seen += self.read_to_end(terminal)
            self.assertEqual(process.wait(60), -signal.SIGTERM)
        self.assertNotIn(b"\n", seen)
        self.assertTrue(seen.endswith(WIPE), seen[-100:])
        for text in self.texts(seen):
            self.assertRegex(text, rb"^\[#*\.*\] packing Data: \d+ % of 7.5 GB(, [0-9.]+ [kMG]B/s, [0-9:]+ left)?$|^$")
            self.assertLess(len(text), 80)
        self.assertIn(b"\x1b[36m", seen)

    def test_the_bar_follows_the_width_of_the_terminal(self):
        with self.terminal(120) as (terminal, child), self.build(child):
            seen = self.read_until(terminal, lambda text: any(len(part) > 70 for part in self.texts(text)))
            self.resize(terminal, 30)
            # What was written meanwhile may still have the old width.
            self.read_until(terminal, lambda text: any(0 < len(part) < 30 for part in self.texts(text)))
            seen = self.read_until(terminal, lambda text: len(self.texts(text)) >= 3)
            self.assertTrue(all(0 < len(part) < 30 for part in self.texts(seen)), seen)

    def test_a_person_who_wants_no_colours_gets_none(self):
        with self.terminal() as (terminal, child), self.build(child, NO_COLOR="1"):
            seen = self.read_until(terminal, lambda text: len(self.texts(text)) >= 3)
            self.assertNotRegex(seen, rb"\x1b\[[0-9;]*m")

    def test_elsewhere_there_are_lines_at_most_one_a_second(self):
        for place in ("pipe", "dumb terminal"):
            with self.subTest(place), contextlib.ExitStack() as stack:
                if place == "pipe":
                    reader, writer = os.pipe()
                    stack.callback(os.close, reader)
                else:
                    reader, writer = stack.enter_context(self.terminal())
                begin = time.monotonic()
                stack.enter_context(self.build(writer, TERM="dumb" if place != "pipe" else "xterm"))
                seen = self.read_until(reader, lambda text: text.count(b"\n") >= 2)
                lines = seen.splitlines()
                self.assertNotIn(b"\x1b", seen)
                self.assertLessEqual(len(lines), time.monotonic() - begin + 1)
                for line in lines:
                    self.assertRegex(
                        line, rb"^zpkpack: packing Data: \d+ % of 7.5 GB, [0-9.]+ [kMG]B/s, [0-9:]+ left$"
                    )

    def test_quiet_shows_none(self):
        os.truncate(self.source / "Data/large", 300 << 20)
        with self.terminal() as (terminal, child), self.build(child, "--quiet") as process:
            self.assertEqual(self.read_to_end(terminal), b"")
            self.assertEqual(process.wait(60), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
