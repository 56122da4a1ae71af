# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What a person sees of a run on a terminal: in a real one (tmux), on a bare one, without one."""

import os
import pty
import re
import shlex
import signal
import subprocess
import unittest

from support import wait_until, write
from terminal_case import PRODUCTS, TerminalCase

WIDTHS = (40, 80, 200)

QUESTION_AT_40 = """
Installation Disc Required

Insert the installation disc of one of
the following products, then choose
“Search”.
  Suite für 日本語 Professional Édition
    2026, in all its parts
  Tools

> [1] Search
  [2] Cancel
[1]:"""


class Screen:
    """A program on a terminal of that width, in a tmux of its own."""

    def __init__(self, test, program, *, columns=80, kind="xterm-256color", redirection="", **variables):
        self._socket = test.folder / ("tmux-%d" % len(list(test.folder.glob("tmux-*"))))
        environment = test.environment(TMUX=None)
        words = ["exec", "env", *(f"{name}={value}" for name, value in {"TERM": kind, **variables}.items()), program]
        # The pane stays when the program has ended. A system's user may have a shell that starts nothing.
        subprocess.run(
            [*self._tmux(), "-f", "/dev/null", "start-server", ";", "set", "-g", "remain-on-exit", "on", ";"]
            + ["set", "-g", "default-shell", "/bin/sh", ";"]
            + ["new-session", "-d", "-x", str(columns), "-y", "60", shlex.join(map(str, words)) + " " + redirection],
            env=environment,
            cwd=test.folder,
            check=True,
        )
        test.addCleanup(subprocess.run, [*self._tmux(), "kill-server"], stderr=subprocess.DEVNULL)

    def _tmux(self):
        return ["tmux", "-u", "-S", self._socket]

    def _ask(self, *command):
        return subprocess.run([*self._tmux(), *command], check=True, capture_output=True, text=True).stdout

    def text(self, *options):
        """What stands there and has stood there, without the blank rest, nor what tmux says when the program has ended."""
        shown = self._ask("capture-pane", "-p", "-S", "-", *options)
        return re.sub(r"\n+Pane is dead.*", "", shown.rstrip(), flags=re.DOTALL).rstrip()

    def wait_for(self, text):
        return wait_until(lambda: text in self.text() and self.text(), 60)

    def type(self, *keys):
        self._ask("send-keys", *keys)

    def resize(self, columns):
        self._ask("resize-window", "-x", str(columns))

    def process(self):
        return int(self._ask("display", "-p", "#{pane_pid}"))

    def wait_ended(self):
        """The exit status, or the number of the signal that ended it, negative."""
        # The terminal may be closed before the end is known.
        asked = ["display", "-p", "#{?pane_dead,#{pane_dead_status},}#{?pane_dead_signal,-#{pane_dead_signal},}"]

        def end():
            # Beside load tmux at times misses the one signal that tells it of the end, and leaves a zombie.
            os.kill(int(self._ask("display", "-p", "#{pid}")), signal.SIGCHLD)
            return self._ask(*asked).strip()

        return int(wait_until(end, 60))


class ScreenCase(TerminalCase):
    def screen(self, bundle, **options):
        return Screen(self, bundle / "Contents/Linux/Zephyrkit", **options)


def inked(text):
    """Without blanks, and without the marks that keep signs at the right end of a line."""
    return re.sub(r"[\s\u200f]", "", text)


class QuestionTest(ScreenCase):
    QUIET = "2>/dev/null"

    def test_stands_in_every_width_terminal_and_direction(self):
        bundle = self.disc_package()
        for columns, kind, language in zip(
            (*WIDTHS, *WIDTHS), ("xterm-256color", "linux", "dumb") * 2, ("en", "ar", "ja", "he", "de", "zh_CN")
        ):
            with self.subTest(columns=columns, kind=kind, language=language):
                texts = self.texts(bundle, language)
                screen = self.screen(
                    bundle, columns=columns, kind=kind, redirection=self.QUIET, LC_ALL=language + ".UTF-8"
                )
                lines = screen.wait_for("[1]:").split("\n")
                # The answers stand each on its own line, the default one marked.
                self.assertEqual(
                    lines[-3:], ["> [1] " + texts["DISCCHECK_START"], "  [2] " + texts["DISCCHECK_CANCEL"], "[1]:"]
                )
                self.assertEqual(
                    inked("".join(lines[:-3])),
                    inked(texts["DISCCHECK_TITLE"] + texts["DISCCHECK_MESSAGE"] + "".join(PRODUCTS)),
                )
                # Nothing was wrapped by the terminal itself.
                self.assertEqual(screen.text("-J").split("\n"), lines)
                screen.type("3", "Enter")
                again = ['[1]: 3', '"3" ? [1] [2]', "", *lines[-3:]]
                self.assertEqual(screen.wait_for("\n".join(again)).split("\n"), lines[:-1] + again)
                screen.type("2", "Enter")
                self.assertEqual(screen.wait_ended(), 0)
                self.assert_nothing_left()

    def test_is_folded_anew_when_the_window_is_resized(self):
        screen = self.screen(self.disc_package(), columns=200, redirection=self.QUIET)
        wide = screen.wait_for("[1]:")
        self.assertIn("then choose “Search”.", wide)
        screen.resize(40)
        # No line of the wide one was longer than the readable width, and what the terminal wrapped stays above.
        narrow = wait_until(lambda: screen.text().endswith(QUESTION_AT_40) and screen.text(), 60)
        screen.resize(200)
        wait_until(lambda: screen.text().endswith(wide.lstrip("\n")), 60)
        self.assertGreater(len(narrow.split("\n")), len(wide.split("\n")))
        screen.type("2", "Enter")
        self.assertEqual(screen.wait_ended(), 0)

    def test_is_shown_again_below_where_nothing_can_be_rewritten(self):
        bundle = self.disc_package()
        for variables in ({"kind": "dumb"}, {"NO_COLOR": "1"}):
            with self.subTest(**variables):
                screen = self.screen(bundle, columns=80, redirection=self.QUIET, **variables)
                screen.wait_for("[1]:")
                screen.resize(40)
                self.assertEqual(screen.wait_for("[1]:\n" + QUESTION_AT_40).count("[1]:"), 2)
                screen.type("2", "Enter")
                self.assertEqual(screen.wait_ended(), 0)

    def test_wrong_answer_stays_where_it_was_given(self):
        screen = self.screen(self.disc_package(), columns=40, redirection=self.QUIET)
        screen.wait_for("[1]:")
        screen.type("3", "Enter")
        again = '"3" ? [1] [2]\n\n> [1] Search\n  [2] Cancel\n[1]:'
        screen.wait_for(again)
        self.assertEqual(screen.text(), f"{QUESTION_AT_40} 3\n{again}")
        screen.resize(200)
        wide = screen.wait_for("then choose “Search”.")
        self.assertTrue(wide.endswith(f"\n[1]: 3\n{again}"), wide)

    def test_search_that_finds_nothing_asks_again(self):
        screen = self.screen(self.disc_package(), columns=200, redirection=self.QUIET)
        screen.wait_for("[1]:")
        screen.type("Enter")
        shown = screen.wait_for("then search again.\n\n> [1] Search")
        self.assertRegex(shown, r"\n\[[#.]{30}\]  0:\d\d  Searching the disc…\n\nThe required installation disc was")

    def test_interrupt_is_cancel(self):
        screen = self.screen(self.disc_package())
        screen.wait_for("\n[1]:")
        self.assertTrue((self.temporary / "VarnoZPK_TEMP").exists())
        screen.type("C-c")
        self.assertEqual(screen.wait_ended(), 0)
        self.assert_nothing_left()
        self.assertEqual(self.records(), [])

    def test_other_ends_are_none(self):
        bundle = self.disc_package()
        for number in (signal.SIGTERM, signal.SIGHUP):
            screen = self.screen(bundle)
            screen.wait_for("\n[1]:")
            os.kill(screen.process(), number)
            self.assertEqual(screen.wait_ended(), 128 + number)
            self.assert_nothing_left()


class AlertTest(ScreenCase):
    def test_is_folded_at_every_width_terminal_and_direction(self):
        bundle = self.refused_package()
        for columns, kind, language in zip(WIDTHS, ("dumb", "xterm-256color", "linux"), ("en", "he", "ar")):
            with self.subTest(columns=columns, kind=kind, language=language):
                screen = self.screen(
                    bundle, columns=columns, kind=kind, redirection="2>/dev/null", LC_ALL=language + ".UTF-8"
                )
                self.assertEqual(screen.wait_ended(), 0)
                lines = screen.text().split("\n")
                told = self.texts(bundle, language)["UPDATE_FAILURE"].replace("%s", "\n".join(PRODUCTS))
                self.assertEqual(inked("".join(lines)), inked(told))
                self.assertEqual(screen.text("-J").split("\n"), lines)
                self.assertIn("  Tools", lines)
                # A product's name that takes two lines is seen to be one.
                self.assertEqual("    2026, in all its parts" in lines, columns == 40)
                self.assertLessEqual(max(map(len, lines)), 100)


class ProgressTest(ScreenCase):
    def setUp(self):
        super().setUp()
        self.bundle = self.simple_package()
        self.gate = self.hold(self.bundle)

    def test_is_one_line_that_time_moves_and_any_width_holds(self):
        screen = self.screen(self.bundle, columns=80, redirection="2>/dev/null")
        screen.wait_for("[#######............]   40%  0:01  Extracting installation files…")
        screen.resize(200)
        screen.wait_for("[############..................]   40%  0:")
        screen.resize(40)
        screen.wait_for("[###......]   40%  0:")
        screen.resize(20)
        screen.wait_for("[##...]   40%  0:")
        screen.resize(80)
        screen.wait_for("[#######............]   40%  0:")
        self.gate.write_text("go\n")
        self.assertEqual(screen.wait_ended(), 0)
        self.assertRegex(screen.text(), r"\n\[#{19}\]  100%  0:\d\d\nrecorder: ran$")

    def test_rewrites_nothing_but_its_line(self):
        screen = self.screen(self.bundle, redirection="2>/dev/null", LC_ALL="fr_FR.UTF-8")
        screen.wait_for("0:02")
        self.gate.write_text("go\n")
        self.assertEqual(screen.wait_ended(), 0)
        title = self.texts(self.bundle, "fr")["FILE_EXTRACT"]
        bar, ran = screen.text().split("\n")
        self.assertRegex(bar, r"^\[#{19}\]  100\u00A0%  0:\d\d  " + re.escape(title) + "$")
        self.assertEqual(ran, "recorder: ran")

    def assert_is_a_line_a_value(self, **options):
        screen = self.screen(self.bundle, **options)
        screen.wait_for("40%")
        self.gate.write_text("go\n")
        self.assertEqual(screen.wait_ended(), 0)
        expected = "".join(f"{value}%  Extracting installation files…\n" for value in (10, 40, 100))
        self.assertEqual(screen.text(), expected + "recorder: ran")

    def test_is_a_line_a_value_where_nothing_can_be_rewritten(self):
        self.assert_is_a_line_a_value(kind="dumb", redirection="2>/dev/null")

    def test_is_a_line_a_value_in_a_pipe(self):
        self.assert_is_a_line_a_value(redirection="2>/dev/null | cat")

    def test_interrupt_ends_it_and_leaves_nothing(self):
        screen = self.screen(self.bundle, redirection="2>/dev/null")
        screen.wait_for("40%")
        screen.type("C-c")
        self.assertEqual(screen.wait_ended(), 128 + signal.SIGINT)
        self.assert_nothing_left()
        self.assertEqual(self.records(), [])


class StreamsTest(TerminalCase):
    """Which words come out where, and how."""

    def read_to_end(self, descriptor):
        shown = b""
        try:
            while block := os.read(descriptor, 65536):
                shown += block
        except OSError:
            pass  # nobody has the terminal open any more
        return shown

    def on_a_terminal(self, bundle, *, output=True, error=True, kind="xterm-256color", **variables):
        """A run with some of its streams on a bare terminal: what that gets, and what the others get."""
        parent, child = pty.openpty()
        run = subprocess.Popen(
            [bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(TERM=kind, **{"NO_COLOR": None, **variables}),
            stdin=child,
            stdout=child if output else subprocess.PIPE,
            stderr=child if error else subprocess.PIPE,
            start_new_session=True,
        )
        os.close(child)
        shown = self.read_to_end(parent)
        os.close(parent)
        others = [part for part in run.communicate(timeout=60) if part is not None]
        self.assertEqual(run.returncode, 0)
        self.assert_nothing_left()
        return shown.replace(b"\r\n", b"\n").decode(), b"".join(others).decode()

    def alert(self, bundle):
        listed = "".join(f"\n  {product}" for product in PRODUCTS)[1:]
        return self.texts(bundle, "en")["UPDATE_FAILURE"].replace("%s", listed) + "\n"

    def test_without_a_terminal_everything_for_the_person_is_on_standard_error(self):
        bundle = self.refused_package()
        done = self.launch(bundle)
        self.assertEqual(done.stdout, "")
        self.assertTrue(done.stderr.endswith("'\n" + self.alert(bundle)))
        self.assertTrue(done.stderr.startswith("CResourceBundleStringTable::GetStringForKey: "))

    def test_question_without_a_terminal_is_told_and_cancelled(self):
        bundle = self.disc_package()
        done = self.launch(bundle)
        texts = self.texts(bundle, "en")
        told = f"{texts['DISCCHECK_TITLE']}\n\n{texts['DISCCHECK_MESSAGE']}\n"
        self.assertTrue(done.stderr.endswith(told + "".join(f"  {product}\n" for product in PRODUCTS)), done.stderr)
        self.assertEqual((done.stdout, self.records()), ("", []))

    def test_terminal_for_the_person_alone(self):
        bundle = self.refused_package()
        piped = self.launch(bundle).stderr
        shown, diagnostics = self.on_a_terminal(bundle, error=False)
        self.assertEqual(inked(shown), inked(self.alert(bundle)))
        # The diagnostics are what they are without a terminal, byte for byte.
        self.assertEqual(diagnostics + self.alert(bundle), piped)
        self.assertNotIn("\x1b", shown)

    def test_output_elsewhere(self):
        bundle = self.refused_package()
        piped = self.launch(bundle).stderr
        shown, output = self.on_a_terminal(bundle, output=False)
        self.assertEqual(output, "")
        self.assertEqual(inked(shown), inked(piped))

    def test_diagnostics_on_the_persons_terminal_are_dim(self):
        bundle = self.refused_package()
        diagnostics = self.launch(bundle).stderr.removesuffix(self.alert(bundle))
        shown, _ = self.on_a_terminal(bundle)
        dim = re.findall(r"\x1b\[2m(.*?)\x1b\[22m\n", shown, re.DOTALL)
        self.assertEqual("".join(text + "\n" for text in dim), diagnostics)
        rest = re.sub(r"\x1b\[2m.*?\x1b\[22m\n", "", shown, flags=re.DOTALL)
        self.assertTrue(rest.startswith("\n"), "an empty line sets the alert apart")
        self.assertEqual(inked(rest), inked(self.alert(bundle)))

    def test_no_escape_sequence_where_none_is_wanted(self):
        bundle = self.refused_package()
        diagnostics = self.launch(bundle).stderr.removesuffix(self.alert(bundle))
        for kind, no_color in (("xterm-256color", "1"), ("dumb", None), (None, None)):
            with self.subTest(kind=kind, no_color=no_color):
                shown, _ = self.on_a_terminal(bundle, kind=kind, NO_COLOR=no_color)
                self.assertNotIn("\x1b", shown)
                self.assertTrue(shown.startswith(diagnostics + "\n"), shown)
                self.assertEqual(inked(shown), inked(diagnostics + self.alert(bundle)))

    def test_words_of_the_setup_program_are_its_own(self):
        write(self.source / "Data/setup", "#!/bin/sh\necho setup out\necho setup err >&2\n", 0o755)
        self.startup()
        shown, _ = self.on_a_terminal(self.pack())
        self.assertTrue(shown.endswith("\nsetup out\nsetup err\n"), shown)

    def test_failure_to_start_is_told_dim_and_as_an_alert(self):
        write(self.source / "Data/setup", "#!/no/such/interpreter\n", 0o755)
        self.startup()
        bundle = self.pack()
        parent, child = pty.openpty()
        run = subprocess.Popen(
            [bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(TERM="linux", NO_COLOR=None),
            stdin=subprocess.DEVNULL,
            stdout=child,
            stderr=child,
        )
        os.close(child)
        shown = self.read_to_end(parent).replace(b"\r\n", b"\n").decode()
        os.close(parent)
        self.assertEqual(run.wait(timeout=60), 1)
        plain = re.sub(r"\x1b\[2?2m", "", shown)
        line = next(line for line in plain.split("\n") if line.startswith("Zephyrkit: cannot start "))
        self.assertIn(f"\x1b[2m{line}\x1b[22m\n", shown)
        self.assertTrue(line.endswith("/Data/setup: Its interpreter /no/such/interpreter is missing"), line)
        self.assertTrue(inked(shown).endswith(inked("\x1b[22m" + self.texts(bundle, "en")["ERROR_INIT"])), shown)


if __name__ == "__main__":
    unittest.main(verbosity=2)
