# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Thirty windows beside the pictures in `Kept`, which somebody has looked at.

A difference leaves old, new and what differs side by side in build/RELEASE/picture-differences. ZPK_TEST_WRITE=1 keeps
the new ones: look at them first.
"""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from picture import Picture
from support import BUILD, PackageTestCase, write

KEPT = pathlib.Path(__file__).with_name("Kept")
DIFFERENCES = BUILD / "picture-differences"
FONTS = pathlib.Path("/usr/share/fonts")
# Of the points that are not background; a newer toolkit draws a corner in another way.
TOLERANCE = 0.02
# The same of the points of a small square, in which a time that is not there is much.
SIDE = 16
PLACE_TOLERANCE = 0.08

MIXED = ["about", "disc-search", "progress-time", "software-list", "temporary-folder"]
# Folder, the languages and what is asked for, and the windows of each.
LOOKS = {
    "light": ("en", [], [*MIXED, "disc-invalid", "disc-search-empty", "disc-search-list", "disc-searching", "menu",
                         "progress-100", "setup-not-started", "software-list-empty"]),
    "mirrored": ("ar", [], MIXED),
    "wide": ("ja", [], MIXED),
    "dark": ("en", ["--dark"], ["disc-search-list", "progress-40", "setup-not-started", "software-list"]),
    "large": ("he", ["--scale", "2"], ["disc-search", "progress-40", "software-list"]),
}
PRODUCTS = ["Example Suite 2", "Example Suite 3 – Professional Edition for Workgroups", "スイート 4", "حزمة 5"]


class PicturesTest(PackageTestCase):
    def describe_package(self, name):
        write(
            self.source / "Package.strings",
            '"CFBundleName" = "ExampleSuite";\n"CFBundleIdentifier" = "com.example.ExampleSuite";\n',
        )

    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()
        items = "".join(f'<ItemInfo DisplayName="{product}"/>' for product in PRODUCTS)
        write(
            self.source / "Info/Condition.xml",
            f"<UpdateInfo><Conditions><UIMLog Signature='none'/></Conditions><TargetItems>{items}</TargetItems></UpdateInfo>",
        )
        if subprocess.run([*self.room(), "true"], capture_output=True).returncode != 0:
            self.skipTest("this machine does not let its users mount")

    def room(self):
        """Before a command: a machine with two fonts, whichever this one has."""
        fonts = self.folder / "fonts"
        if not fonts.exists():
            for place in ("truetype/dejavu", "opentype/ipafont-gothic"):
                shutil.copytree(FONTS / place, fonts / place)
        hide = f'mount --bind "$0" {FONTS} && exec "$@"'
        return ["unshare", "--map-root-user", "--mount", "sh", "-c", hide, fonts]

    def make(self, name, language, options):
        folder = self.folder / name
        command = [BUILD / "zpkpack", "preview", self.source, "-o", folder, "--lang", language, "--quiet", *options]
        subprocess.run([*self.room(), *command], check=True, stdout=subprocess.DEVNULL,
                       env={"PATH": os.environ["PATH"], "HOME": str(self.folder)})
        return folder / language

    def test_they_look_as_they_did(self):
        shutil.rmtree(DIFFERENCES, ignore_errors=True)
        for name, (language, options, windows) in LOOKS.items():
            made = self.make(name, language, options)
            for window in windows:
                with self.subTest(f"{name}/{window}"):
                    self.expect_kept(KEPT / f"{name}-{window}.png", made / f"{window}.png")

    def expect_kept(self, kept, made):
        if os.environ.get("ZPK_TEST_WRITE") == "1":
            KEPT.mkdir(exist_ok=True)
            shutil.copyfile(made, kept)
            return
        new, old = Picture(made.read_bytes()), Picture(kept.read_bytes())
        whole, place = new.difference(old), new.difference_in_a_place(old, SIDE)
        if whole > TOLERANCE or place > PLACE_TOLERANCE:
            self.fail(f"{whole:.1%} of {kept.stem}, {place:.0%} of a place, is another: see {self.show(kept, made)}")

    def show(self, kept, made):
        """Old, new and what differs, side by side."""
        DIFFERENCES.mkdir(exist_ok=True)
        shown = DIFFERENCES / kept.name
        with tempfile.NamedTemporaryFile(suffix=".png") as marked:
            subprocess.run(["compare", kept, made, marked.name], capture_output=True)
            parts = [kept, made] + ([marked.name] if os.path.getsize(marked.name) else [])
            subprocess.run(["convert", *parts, "-bordercolor", "gray", "-border", "4", "+append", shown], check=True)
        return shown

    def test_thirty_are_kept(self):
        listed = {f"{name}-{window}.png" for name, (_, _, windows) in LOOKS.items() for window in windows}
        self.assertEqual({path.name for path in KEPT.iterdir()}, listed)
        self.assertEqual(len(listed), 30)


if __name__ == "__main__":
    unittest.main(verbosity=2)
