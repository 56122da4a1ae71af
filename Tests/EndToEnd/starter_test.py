#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The desktop entry at the top of a bundle, run as file managers run it."""

import os
import pathlib
import re
import shutil
import subprocess
import unittest
import urllib.parse

from support import PackageTestCase, write

LAUNCHER_PATH = "Contents/Linux/Zephyrkit"

FOLDERS = [
    "plain",
    "Meine Downloads (2)",
    "two  blanks ",
    "it's \"quoted\"",
    "$HOME `id` $(id) ${x}",
    "100%25 %k %%",
    "back\\slash\\n",
    "new\nline\n",
    "glob*?[a]; & | #",
    "日本語 عربي",
    "file:",
]

# What managers that use GLib do; in a process of its own, whose environment is the test's.
LAUNCH = """
import sys
from gi.repository import Gio
assert Gio.DesktopAppInfo.new_from_filename(sys.argv[1]).launch([], None)
"""


def entry_of(path):
    """The keys of the entry, their values as they stand."""
    lines = path.read_text(encoding="utf-8").splitlines()
    return dict(line.split("=", 1) for line in lines[lines.index("[Desktop Entry]") + 1 :])


def command_of(path, place):
    """The arguments of the entry; `place` stands for %k."""
    words = re.findall(r"'[^']*'|[^' ]+", entry_of(path)["Exec"])
    arguments = [place if word == "%k" else word.strip("'").replace("%%", "%") for word in words]
    return [word for word in arguments if word is not None]


# Says by which path it was started, last of all to whoever waits for the end of the stream.
LAUNCHER = '#!/bin/sh\nprintf %s "$0" > "$ZPK_TEST_RECORD"\n'


class StarterTest(PackageTestCase):
    """A bundle whose launcher says no more than where it is."""

    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()
        self.bundle = self.pack("Made.app", "--without-windows")
        write(self.bundle / LAUNCHER_PATH, LAUNCHER, 0o755)

    def starter_in(self, folder):
        """The starter of the bundle after that was moved below the folder of that name."""
        place = self.folder / folder
        place.mkdir()
        self.bundle = self.bundle.rename(place / "Made.app")
        return self.bundle / (self.name + ".desktop")

    def run_entry(self, command, expected=None, cwd="/", launched=None):
        done = subprocess.run(
            command,
            env=self.environment(GIO_LAUNCHED_DESKTOP_FILE=launched),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=60,
            cwd=cwd,
        )
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assert_started(expected or self.bundle)

    def assert_started(self, folder, output=""):
        self.assertTrue(self.record_path.exists(), output)
        self.assertEqual(os.path.normpath(self.record_path.read_text()), os.path.normpath(folder / LAUNCHER_PATH))
        self.record_path.unlink()

    def test_every_way_to_say_where_it_lies(self):
        for folder in FOLDERS:
            with self.subTest(folder=folder):
                starter = self.starter_in(folder)
                address = "file://" + urllib.parse.quote(str(starter))
                host = "file://localhost" + urllib.parse.quote(str(starter), safe="/'")
                for place in (str(starter), str(starter.parent), address, host):
                    self.run_entry(command_of(starter, place))
                if " ".join(folder.split()) == folder.strip("\n"):
                    self.run_entry([*command_of(starter, None), *str(starter.parent).split(" ")])
                for nothing in ("", None):
                    self.run_entry(command_of(starter, nothing), launched=str(starter))
                    self.run_entry(command_of(starter, nothing), pathlib.Path(), cwd=starter.parent)

    def test_as_glib_starts_it(self):
        for folder in FOLDERS:
            with self.subTest(folder=folder):
                starter = self.starter_in(folder)
                # The launch does not wait, but the stream ends with the launcher.
                done = subprocess.run(
                    ["/usr/bin/python3", "-c", LAUNCH, starter],
                    env=self.environment(),
                    stdin=subprocess.DEVNULL,
                    capture_output=True,
                    text=True,
                    timeout=60,
                )
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assert_started(self.bundle, done.stderr)

    def test_with_every_shell_that_is_there(self):
        starter = self.starter_in("new\nline 'é\n")
        address = "file://" + urllib.parse.quote(str(starter))
        for shell in (["dash"], ["bash", "--posix"], ["busybox", "sh"]):
            if shutil.which(shell[0]):
                with self.subTest(shell=shell):
                    self.run_entry([*shell, *command_of(starter, address)[1:]])

    def test_link_to_it(self):
        starter = self.starter_in("real")
        link = self.folder / "Desktop link.desktop"
        link.symlink_to(starter)
        self.run_entry(command_of(link, str(link)))

    def test_copy_without_its_bundle(self):
        copy = pathlib.Path(shutil.copy(self.starter_in("real"), self.folder / "alone.desktop"))
        done = subprocess.run(command_of(copy, str(copy)), env=self.environment(), capture_output=True, cwd="/")
        self.assertEqual((done.returncode, self.record_path.exists()), (127, False))


class StarterRunTest(PackageTestCase):
    def test_whole_run(self):
        self.recorder()
        self.startup()
        starter = self.pack("Made.app", "--without-windows") / (self.name + ".desktop")
        done = subprocess.run(
            command_of(starter, str(starter)), env=self.environment(), capture_output=True, timeout=60, cwd="/"
        )
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.record()["folder"], "/")
        self.assert_nothing_left()


class StarterContentsTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()

    def made(self, *arguments):
        shutil.rmtree(self.folder / "Made.app", ignore_errors=True)
        bundle = self.pack("Made.app", "--without-windows", *arguments)
        return bundle / (self.name + ".desktop")

    def test_without_a_name_for_people(self):
        starter = self.made()
        entry = entry_of(starter)
        # What all managers read alike.
        self.assertRegex(entry.pop("Exec"), r"\Ash -c '[^'\\\\]+' sh %k\Z")
        self.assertEqual(
            entry,
            {
                "Type": "Application",
                "Name": self.name,
                "Icon": "system-software-install",
                "Terminal": "false",
                "StartupNotify": "true",
                "StartupWMClass": "com.example." + self.name,
            },
        )
        self.assertEqual(starter.stat().st_mode & 0o7777, 0o755)
        self.assertIn("  %s.desktop\n" % self.name, (starter.parent / "Contents/Resources/Manifest.sha256").read_text())

    def test_names_in_languages(self):
        with open(self.source / "Package.strings", "a") as file:
            file.write('"CFBundleDisplayName" = " Acme\\\\n Suite";\n')
        shutil.copytree(self.made().parent / "Contents/Resources/UILang", self.source / "UILang")
        write(self.source / "UILang/ja/InfoPlist.strings", '"CFBundleDisplayName" = "アクミ";\n')
        write(self.source / "UILang/pt_BR/InfoPlist.strings", '"CFBundleDisplayName" = "Suíte Acme";\n')
        entry = entry_of(self.made())
        self.assertEqual(
            {key: value for key, value in entry.items() if key.startswith("Name")},
            {"Name": "\\sAcme\\\\n Suite", "Name[ja]": "アクミ", "Name[pt_BR]": "Suíte Acme"},
        )


if __name__ == "__main__":
    unittest.main(verbosity=2)
