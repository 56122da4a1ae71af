# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The page of script/pictures, made of one language in one look: every picture is on it, once, and no other."""

import collections
import html.parser
import importlib.machinery
import importlib.util
import pathlib
import tempfile
import unittest

from support import BUILD
from vte import skip_without_vte

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "script/pictures"
SCREENS = ["answers", "disc", "no-folder", "not-started", "progress", "refused", "run"]


def script():
    """The script as a module of its own."""
    loader = importlib.machinery.SourceFileLoader("pictures_script", str(SCRIPT))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


class Page(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.found = collections.defaultdict(list)
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            self.found[tag, name].append(value)


class PicturesPageTest(unittest.TestCase):
    def setUp(self):
        skip_without_vte(self)
        folder = tempfile.TemporaryDirectory(prefix="zpk-page-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.script = script()
        self.script.BUILD = BUILD
        self.script.PICTURES = self.pictures = self.folder / "pictures"
        self.pictures.mkdir()
        self.script.LOOKS = [("dark", 1)]
        self.script.COLUMNS = [40]
        self.script.languages = lambda: ["he"]

    def test_names_each_picture_once_and_no_other(self):
        self.script.make_windows(self.folder)
        self.script.make_screens(self.folder)
        self.script.write_page()
        page = Page((self.pictures / "index.html").read_text())
        made = sorted(str(path.relative_to(self.pictures)) for path in self.pictures.rglob("*.png"))
        self.assertEqual(sorted(page.found["img", "src"]), made)
        self.assertEqual(page.found["img", "alt"], [pathlib.Path(place).stem for place in page.found["img", "src"]])
        self.assertLessEqual({f"terminal-dark-1/he/{screen}-40.png" for screen in SCREENS}, set(made))
        self.assertIn("windows-dark-1/he/progress-40.png", made)
        # Each language is jumped to from the top.
        self.assertEqual((page.found["h2", "id"], page.found["a", "href"]), (["he"], ["#he"]))


if __name__ == "__main__":
    unittest.main(verbosity=2)
