# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What a person who reads Arabic or Hebrew sees of a run on a terminal that turns such lines around (VTE): where the
signs, numbers and answers stand that order what is asked and told."""

import json
import os
import pathlib
import re
import subprocess
import unittest

from terminal_case import TerminalCase
from terminal_letters import SIGNS, TerminalLetters
from vte import skip_without_vte

HERE = pathlib.Path(__file__).parent
COLUMNS = 80
PRODUCTS = ("Example Suite 2", "スイート 4 (Pro)", "حزمة 5", "חבילה 6, v2.", "חבילה (7).")

# As they stand there from left to right; `~` are letters, with blanks between them. A line of right-to-left letters
# begins at its right, so that a full stop at its end is the first sign.
LISTED = ["  ~ 2", "  ~ 4 (~)", "  5 ~", "  6 ~, ~2.", "  .(7) ~", ""]
ANSWERS = ["> [1] ~", "  [2] ~"]
QUESTIONS = {
    "ar": ["", "~", "", ".«~» ~"],
    "he": ["", "~", "", ".”~” ~ ,~"],
}
ALERTS = {
    "ar": ["", ":~", "", *LISTED, ".~"],
    "he": ["", ":~ ,~", "", *LISTED, ".~ ,~"],
}
# Who reads Arabic reads the second with its percentage first, from the right.
BARS = {
    "he": "[#######............]   40%  TIME  …~",
    "ar": "[#######............]   …~  TIME  ٪٤٠",
}


class BidirectionalTest(TerminalCase):
    def setUp(self):
        super().setUp()
        skip_without_vte(self)

    def screen(self, name, *words, until=None, typed=(), **variables):
        return {
            "command": ["/bin/sh", "-c", "printf '\\033[?25l'; exec \"$@\" 2>/dev/null", "sh", *map(str, words)],
            "environment": self.environment(TERM="xterm-256color", **variables),
            "columns": COLUMNS, "rows": 24, "spacing": 1.5, "dark": False, "until": until, "typed": list(typed),
            "picture": str(self.folder / f"{name}.png"),
        }

    def run_screen(self, language, name, make, **ends):
        """What runs a package of its own in that language."""
        self.describe_package(f"{self.name}-{name}-{language}")
        bundle = make().rename(self.folder / f"{name}-{language}.app")
        temporary = self.folder / f"tmp-{name}-{language}"
        temporary.mkdir(mode=0o700)
        return self.screen(f"{name}-{language}", bundle / "Contents/Linux/Zephyrkit", TMPDIR=str(temporary),
                           LC_ALL=f"{language}.UTF-8", **ends)

    def held_package(self):
        (self.source / "Info/Condition.xml").unlink(missing_ok=True)
        bundle = self.simple_package()
        self.hold(bundle)
        return bundle

    def take_pictures(self, chains):
        (self.folder / "screens.json").write_text(json.dumps(chains))
        done = subprocess.run(
            [HERE.parent / "Support/run-under-xvfb", "-s", "3760x2220", HERE / "terminal_screens.py",
             self.folder / "screens.json"],
            env={**os.environ, "GDK_SCALE": "1"}, capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)

    def rows(self, name):
        """Without the blank rest, and with any time."""
        rows = [re.sub(r"\d:\d\d", "TIME", row) for row in self._letters.rows(self.folder / f"{name}.png")]
        while rows[-1] == "":
            rows.pop()
        return rows

    def test_what_stands_where(self):
        signs = self.screen("signs", "printf", "%s\\n", *SIGNS)
        runs = {language: {
            "question": self.run_screen(language, "question", lambda: self.disc_package(PRODUCTS), until=["[1]:", 2],
                                        typed=["3\r"]),
            "alert": self.run_screen(language, "alert", lambda: self.refused_package(PRODUCTS)),
            "bar": self.run_screen(language, "bar", self.held_package, until=["#######.", 1]),
        } for language in QUESTIONS}
        self.take_pictures([[signs], *([run["question"], run["bar"]] for run in runs.values()),
                            *([run["alert"]] for run in runs.values())])
        self._letters = TerminalLetters(self.folder / "signs.png", COLUMNS)
        for language in runs:
            asked = [*QUESTIONS[language], *LISTED, *ANSWERS, "[1]: 3", '"3" ~ [1] [2]', "", *ANSWERS, "[1]:"]
            for name, expected in (("question", asked), ("alert", ALERTS[language]), ("bar", [BARS[language]])):
                with self.subTest(name, language=language):
                    self.assertEqual(self.rows(f"{name}-{language}"), expected)


if __name__ == "__main__":
    unittest.main(verbosity=2)
