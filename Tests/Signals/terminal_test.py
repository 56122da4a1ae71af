# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Ctrl-C on a terminal, whose driver sends the signal to every process in the foreground."""

import os
import pty
import signal
import textwrap
import threading
import unittest

from ends_test import ENDLESS_TOOL, EndCase, is_running
from support import wait_until, write

INTERRUPT = b"\x03"

# Notes each signal that reaches it, and ends when it is told to.
COUNTING_SETUP = textwrap.dedent(
    """\
    #!/usr/bin/env python3
    import os, signal
    def note(number, frame):
        os.write(notes, b"signal\\n")
    notes = os.open({notes!r}, os.O_WRONLY | os.O_CREAT | os.O_APPEND)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, note)
    os.write(notes, b"ready\\n")
    open({gate!r}).read()
    os.write(notes, b"end\\n")
    """
)


class TerminalTest(EndCase):
    def start_on_terminal(self, bundle):
        """Starts the launcher as the foreground of a terminal of its own; gives its process and the terminal."""
        program = str(bundle / "Contents/Linux/Zephyrkit")
        environment = self.environment()
        process, terminal = pty.fork()
        if process == 0:
            os.execve(program, [program], environment)
        self.said = b""
        reader = threading.Thread(target=self.read, args=(terminal,))
        reader.start()
        self.addCleanup(os.close, terminal)
        self.addCleanup(reader.join)
        self.addCleanup(self.end, process)
        self.ended = False
        return process, terminal

    def read(self, terminal):
        try:
            while piece := os.read(terminal, 65536):
                self.said += piece
        except OSError:
            pass  # The last process on the terminal has ended.

    def end(self, process):
        if not self.ended:
            os.kill(process, signal.SIGKILL)
            os.waitpid(process, 0)

    def status(self, process):
        def look():
            found, status = os.waitpid(process, os.WNOHANG)
            return (os.waitstatus_to_exitcode(status),) if found else None

        (status,) = wait_until(look, 60)
        self.ended = True
        return status

    def assert_interrupted(self, process):
        self.assertEqual(self.status(process), 128 + signal.SIGINT, self.said)
        self.assert_nothing_left()
        self.assertEqual(self.records(), [])

    def test_before_the_setup_program_everything_ends(self):
        bundle = self.simple_package()
        for archive in ("Info.dat", "Data.dat"):
            with self.subTest(archive=archive):
                tool = bundle / "Contents/Helpers/ditto"
                if tool.with_name("ditto.real").exists():
                    tool.with_name("ditto.real").rename(tool)
                self.replace_tool(bundle, ENDLESS_TOOL, archive=archive)
                process, terminal = self.start_on_terminal(bundle)
                tool_process = self.tool_process()
                os.write(terminal, INTERRUPT)
                self.assert_interrupted(process)
                self.assertFalse(is_running(tool_process))
                self.number.unlink()

    def test_at_a_question_it_is_cancel(self):
        write(
            self.source / "Info/Condition.xml",
            '<UpdateInfo><Conditions><Disc FilePath="a"/></Conditions></UpdateInfo>',
        )
        bundle = self.simple_package()
        process, terminal = self.start_on_terminal(bundle)
        wait_until(lambda: self.said.endswith(b"\n[1]: "), 60)
        os.write(terminal, INTERRUPT)
        self.assertEqual(self.status(process), 0, self.said)
        self.assert_nothing_left()
        self.assertEqual(self.records(), [])

    def test_while_the_setup_program_runs_it_gets_what_the_terminal_sends_and_no_more(self):
        gate, notes = self.folder / "gate", self.folder / "notes"
        os.mkfifo(gate)
        write(self.source / "Data/setup", COUNTING_SETUP.format(notes=str(notes), gate=str(gate)), 0o755)
        self.startup()
        process, terminal = self.start_on_terminal(self.pack())
        wait_until(lambda: notes.exists() and notes.read_text() == "ready\n", 60)
        for count in range(1, 4):
            os.write(terminal, INTERRUPT)
            wait_until(lambda count=count: notes.read_text().count("signal\n") >= count, 60)
            self.assertEqual(os.waitpid(process, os.WNOHANG), (0, 0), "the launcher waits on")
        gate.write_text("")
        self.assertEqual(self.status(process), 0, self.said)
        self.assertEqual(notes.read_text(), "ready\n" + 3 * "signal\n" + "end\n")
        self.assert_nothing_left()


if __name__ == "__main__":
    unittest.main(verbosity=2)
