# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Pictures of what a package's launcher can show, made without running anything of the package."""

import contextlib
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import unittest

from packager_case import CommandTestCase
from support import BUILD, TEMPLATE, light_template, wait_until, write

ROOT = pathlib.Path(__file__).resolve().parents[2]
TEXTS = TEMPLATE / "Contents/Resources/UILang"
PICTURES = {
    "about",
    "disc-invalid",
    "disc-search",
    "disc-search-empty",
    "disc-search-list",
    "disc-searching",
    "menu",
    "progress-10",
    "progress-40",
    "progress-100",
    "progress-time",
    "setup-not-started",
    "software-list",
    "software-list-empty",
    "temporary-folder",
}
# The package's name stands in all of them, and its products in these.
WITH_PRODUCTS = {"disc-search", "disc-search-list", "software-list"}


def size_of(picture):
    data = picture.read_bytes()
    assert data.startswith(b"\x89PNG\r\n\x1a\n") and data[12:16] == b"IHDR", picture
    return struct.unpack(">II", data[16:24])


def brightness(picture):
    """From 0, black, to 1, white."""
    return float(subprocess.check_output(["identify", "-format", "%[fx:mean]", picture]))


class PreviewTestCase(CommandTestCase):
    def products(self, *names):
        items = "".join(f'<ItemInfo DisplayName="{name}"/>' for name in names)
        write(
            self.source / "Info/Condition.xml",
            f"<UpdateInfo><Conditions><UIMLog Signature='none'/></Conditions>"
            f"<TargetItems>{items}</TargetItems></UpdateInfo>",
        )

    def languages(self, *codes, fallback="en"):
        """Texts of the package's own: those of the template, under these codes."""
        rows = "".join(f'<Language Code="{code}"/>' for code in codes)
        write(
            self.source / "UILang/Languages.xml",
            f'<?xml version="1.0" encoding="UTF-8"?><Languages FallBackCode="{fallback}">{rows}</Languages>',
        )

    def preview(self, package, folder, *arguments, **settings):
        return self.run_zpkpack("preview", package, "-o", folder, *arguments, **settings)

    def pictures(self, folder, language):
        return {path.stem: path for path in (self.folder / folder / language).iterdir()}

    def bytes_of(self, folder, language):
        return {name: path.read_bytes() for name, path in self.pictures(folder, language).items()}


class PreviewTest(PreviewTestCase):
    def test_it_shows_every_window_in_the_languages_asked_for_and_tells_what_it_wrote(self):
        done = self.preview(self.source, "out", "--lang", "en,ja,ar")
        self.assertEqual(sorted(os.listdir(self.folder / "out")), ["ar", "en", "index.html", "ja"])
        written = sorted(str(path.relative_to(self.folder)) for path in (self.folder / "out").rglob("*.*"))
        self.assertEqual(sorted(done.stdout.decode().split()), written)
        # A slow machine is told how far it is.
        self.assertRegex(done.stderr, rb"\A(zpkpack: drawing: [^\n]*\n)*\Z")
        page = (self.folder / "out/index.html").read_text()
        for language in ("en", "ja", "ar"):
            self.assertEqual(set(self.pictures("out", language)), PICTURES)
            for name in PICTURES:
                self.assertIn(f'src="{language}/{name}.png"', page)
        for name in PICTURES - {"about"}:
            shown = {self.bytes_of("out", language)[name] for language in ("en", "ja", "ar")}
            self.assertEqual(len(shown), 3, f"{name} is the same in two languages")

    def test_all_languages_are_shown_unless_told(self):
        self.preview(self.source, "out")
        codes = sorted(path.name for path in TEXTS.iterdir() if path.is_dir())
        self.assertEqual(sorted(path.name for path in (self.folder / "out").iterdir() if path.is_dir()), codes)

    def test_the_package_speaks_in_its_own_name_and_of_its_own_products(self):
        self.products("Writer 4", "Writer 5")
        self.preview(self.source, "one", "--lang", "en")
        self.products("Painter 9", "Writer 5")
        self.preview(self.source, "two", "--lang", "en")
        self.describe_package("Another")
        self.preview(self.source, "three", "--lang", "en")
        one, two, three = (self.bytes_of(folder, "en") for folder in ("one", "two", "three"))
        self.assertEqual({name for name in PICTURES if one[name] != two[name]}, WITH_PRODUCTS)
        self.assertEqual({name for name in PICTURES if two[name] != three[name]}, PICTURES)
        self.assertNotEqual(one["disc-search"], one["disc-search-empty"])
        self.assertNotEqual(one["software-list"], one["software-list-empty"])
        self.assertEqual(len({one[f"progress-{percent}"] for percent in (10, 40, 100)}), 3)

    def test_a_run_gives_the_same_pictures_whatever_is_around_it(self):
        self.preview(self.source, "one", "--lang", "en,ar")
        self.preview(
            self.source,
            "two",
            "--lang",
            "en,ar",
            env={
                "PATH": os.environ["PATH"],
                "DISPLAY": ":77",
                "WAYLAND_DISPLAY": "none",
                "LANG": "ja_JP.UTF-8",
                "LANGUAGE": "he",
                "QT_QPA_PLATFORM": "xcb",
                "QT_SCALE_FACTOR": "3",
                "QT_STYLE_OVERRIDE": "windows",
                "QT_FONT_DPI": "200",
                "LD_PRELOAD": "",
                "LD_LIBRARY_PATH": "/usr/lib/x86_64-linux-gnu",
            },
        )
        for language in ("en", "ar"):
            self.assertEqual(self.bytes_of("one", language), self.bytes_of("two", language))

    def test_a_scale_of_two_doubles_the_pictures(self):
        self.preview(self.source, "one", "--lang", "en,ja,ar")
        self.preview(self.source, "two", "--lang", "en,ja,ar", "--scale", "2")
        for language in ("en", "ja", "ar"):
            larger = self.pictures("two", language)
            for name, path in self.pictures("one", language).items():
                width, height = size_of(path)
                self.assertEqual(size_of(larger[name]), (2 * width, 2 * height), f"{language}/{name}")

    def test_dark_pictures_are_darker(self):
        self.preview(self.source, "light", "--lang", "en")
        self.preview(self.source, "dark", "--lang", "en", "--dark")
        dark = self.pictures("dark", "en")
        for name, path in self.pictures("light", "en").items():
            self.assertEqual(size_of(dark[name]), size_of(path))
            self.assertLess(brightness(dark[name]) + 0.4, brightness(path), name)

    def test_right_to_left_windows_are_mirrored(self):
        self.preview(self.source, "out", "--lang", "en,ar")
        for language, filled in (("en", "west"), ("ar", "east")):
            # The bar is blue where it is filled.
            halves = {}
            for side in ("west", "east"):
                command = ["convert", self.pictures("out", language)["progress-10"], "-gravity", side]
                command += ["-crop", "50%x100%+0+0", "+repage", "-format", "%[fx:mean.b-mean.r]", "info:"]
                halves[side] = float(subprocess.check_output(command))
            other = {"west": "east", "east": "west"}[filled]
            self.assertGreater(halves[filled], halves[other] + 0.005, language)

    def test_a_bundle_and_one_file_give_the_pictures_of_their_source(self):
        self.products("Writer 4")
        self.preview(self.source, "of-source", "--lang", "en,he")
        for name in ("Made.app", "Made.run"):
            self.run_zpkpack("build", self.source, "-o", name, "--template", light_template())
            folder = "of-" + name
            self.preview(name, folder, "--lang", "en,he")
            for language in ("en", "he"):
                self.assertEqual(self.bytes_of(folder, language), self.bytes_of("of-source", language))

    def test_every_text_that_the_launcher_can_show_is_in_a_picture(self):
        """A language for each key, in which that one's text is another: some picture shows it."""
        words = dict(
            re.findall(r'(ZPKSTRING_\w+) = "(\w+)"', (ROOT / "Common/ZPKCoreStringDefine.cpp").read_text())
        )
        asked = set()
        for room in ("InstallerCore", "UserInterface"):
            for path in (ROOT / room).rglob("*.cpp"):
                asked.update(words[name] for name in re.findall(r"ZPKSTRING_\w+", path.read_text()))
        self.assertGreaterEqual(len(asked), 19)
        # These items can do nothing on this desktop, and are not in the menu.
        asked -= {"ZPKString_" + item for item in ("Preferences", "Services", "HideOthers", "ShowAll")}
        table = (TEXTS / "en/ZPKStringTable.def").read_text()
        keys = sorted(words.values())
        codes = {key: "k%d" % number for number, key in enumerate(keys)}
        self.languages("plain", *codes.values(), fallback="plain")
        write(self.source / "UILang/plain/ZPKStringTable.def", table)
        for key, code in codes.items():
            other = "DejaVu Serif" if key == "ZPKString_FontName_ForMac" else "%s Xyzzy"
            changed, count = re.subn(f'"{key}" = "[^"]*"', f'"{key}" = "{other}"', table)
            self.assertEqual(count, 1, key)
            write(self.source / f"UILang/{code}/ZPKStringTable.def", changed)
        self.preview(self.source, "out")
        plain = self.bytes_of("out", "plain")
        shown = {key for key, code in codes.items() if self.bytes_of("out", code) != plain}
        self.assertEqual(shown, asked)

    def test_wrong_wishes_are_told_and_leave_nothing(self):
        write(self.folder / "taken/file", "kept")
        rows = [
            (["--lang", "xx"], 1, b"there is no language xx; there are en, ja,"),
            (["--lang", "../en"], 1, b"there is no language ../en; "),
            (["--scale", "5"], 2, b"--scale"),
            (["--scale", "0"], 2, b"--scale"),
            (["-o", "taken"], 1, b"taken exists"),
            (["-o", "/proc/self/none/out"], 1, b"/proc/self/none"),
        ]
        for arguments, status, words in rows:
            with self.subTest(arguments):
                before = self.tree(self.folder)
                output = [] if "-o" in arguments else ["-o", "out"]
                done = self.run_zpkpack("preview", self.source, *output, *arguments, status=status)
                self.assertIn(words, done.stderr)
                self.assertEqual(done.stdout, b"")
                self.assertEqual(self.tree(self.folder), before)

    def test_a_package_without_windows_is_told(self):
        for name in ("Bare.app", "Bare.run"):
            self.run_zpkpack(
                "build", self.source, "-o", name, "--template", light_template(), "--without-windows"
            )
            done = self.preview(name, "out", status=1)
            self.assertIn(f"{name}: it carries no windows".encode(), done.stderr)
            self.assertFalse((self.folder / "out").exists())


class HostilePreviewTest(PreviewTestCase):
    """A package is somebody else's."""

    def test_codes_and_texts_do_not_leave_the_folder(self):
        name = "A&amp;B"
        self.products("&lt;b&gt;bold&lt;/b&gt;", "\u202e\u0085", "x" * 5000, "%s%n")
        self.languages("en", "../outside", "/tmp/zpk-outside", ".", "a/b", " ", "q&quot;'&gt;", "-o", "ja")
        shutil.copytree(TEXTS / "en", self.source / "UILang/en")
        shutil.copytree(TEXTS / "ja", self.source / "UILang/ja")
        self.describe_package(name)
        before = set(os.listdir(self.folder))
        self.preview(self.source, "out")
        self.assertEqual(set(os.listdir(self.folder)) - before, {"out"})
        self.assertEqual(sorted(os.listdir(self.folder / "out")), ["-o", "en", "index.html", "ja"])
        self.assertFalse(os.path.exists("/tmp/zpk-outside"))
        self.assertEqual(set(self.pictures("out", "en")), PICTURES)
        page = (self.folder / "out/index.html").read_text()
        self.assertIn("<h1>A&amp;amp;B</h1>", page)

    def test_texts_larger_than_a_screen_fit_all_the_same(self):
        long = "Text " * 2000
        table = (TEXTS / "en/ZPKStringTable.def").read_text()
        self.languages("en")
        write(
            self.source / "UILang/en/ZPKStringTable.def",
            re.sub(r'(DISCCHECK_MESSAGE|INVALID_DISC|FILE_EXTRACT|QuitZephyrkit)" = "[^"]*"', rf'\1" = "{long}"', table),
        )
        self.preview(self.source, "out")
        for name, path in self.pictures("out", "en").items():
            width, height = size_of(path)
            self.assertTrue(0 < width <= 1940 and 0 < height <= 1120, name)

    def test_nothing_of_a_bundle_is_run(self):
        bundle = self.folder / "Made.app"
        self.run_zpkpack("build", self.source, "-o", bundle, "--template", light_template())
        mark = self.folder / "ran"
        for path in (
            "Linux/Zephyrkit",
            "Helpers/ditto",
            "PlugIns/ZPKDesktop.so",
            "Frameworks/ld-linux-x86-64.so.2",
            "Frameworks/Zephyrkit-desktop",
        ):
            place = bundle / "Contents" / path
            place.unlink(missing_ok=True)
            write(place, f"#!/bin/sh\ntouch {mark}\n", 0o755)
        self.preview(bundle, "out", "--lang", "en")
        self.assertEqual(set(self.pictures("out", "en")), PICTURES)
        self.assertFalse(mark.exists())

    def test_forms_that_are_none_are_told_and_leave_nothing(self):
        made = self.folder / "Made.app"
        self.run_zpkpack("build", self.source, "-o", made, "--template", light_template())
        good = (TEMPLATE / "Contents/Resources/CDSearchWindow.ui").read_text()
        rows = [
            ("CDSearchWindow.ui", "", b"CDSearchWindow.ui"),
            ("CDSearchWindow.ui", good.replace("searchButton", "other"), b"CDSearchWindow.ui"),
            ("ProgressWindow.ui", "<ui>" * 10000, b"ProgressWindow.ui"),
            ("MainMenu.ui", "no form", b"MainMenu.ui"),
            ("MainMenu.ui", b"\0" * (2 << 20), b"too large"),
        ]
        for name, text, words in rows:
            with self.subTest(name=name, words=words):
                bundle = self.folder / "Bad.app"
                shutil.copytree(made, bundle, symlinks=True)
                write(bundle / "Contents/Resources" / name, text)
                done = self.preview(bundle, "out", "--lang", "en", status=1)
                self.assertIn(words, done.stderr)
                self.assertEqual(done.stdout, b"")
                self.assertFalse((self.folder / "out").exists())
                shutil.rmtree(bundle)

    def test_a_form_larger_than_any_screen_is_cut_to_it(self):
        made = self.folder / "Made.app"
        self.run_zpkpack("build", self.source, "-o", made, "--template", light_template())
        form = made / "Contents/Resources/CDSearchWindow.ui"
        write(form, form.read_text().replace("<width>460", "<width>2000000000"))
        self.preview(made, "out", "--lang", "en")
        for name, path in self.pictures("out", "en").items():
            width, height = size_of(path)
            self.assertTrue(0 < width <= 1922 and 0 < height <= 1113, name)

    def test_things_in_the_place_of_files_neither_wait_nor_lead_away(self):
        os.mkfifo(self.source / "Info/Condition.xml")
        done = self.preview(self.source, "out", "--lang", "en", status=1)
        self.assertIn(b"Condition.xml", done.stderr)
        self.assertFalse((self.folder / "out").exists())


class PreviewEndsTest(PreviewTestCase):
    """A preview that does not come to its end leaves no pictures, and nothing else."""

    @contextlib.contextmanager
    def preview_half_way(self):
        """One that is drawing its second language of very many."""
        codes = ["c%d" % number for number in range(3000)]
        self.languages(*codes, fallback="c0")
        shutil.copytree(TEXTS / "en", self.source / "UILang/c0")
        self.before = self.tree(self.folder)
        process = subprocess.Popen(
            [BUILD / "zpkpack", "preview", self.source, "-o", "out"],
            cwd=self.folder,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            start_new_session=True,
            # Whoever runs the tests may ignore it.
            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
        )

        def draws():
            self.assertIsNone(process.poll(), "it ended before its time")
            return list(self.folder.glob(".zpk-*/made/c1/*.png"))

        try:
            wait_until(draws, 60)
            yield process
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()

    def wait_for_end_of_group(self, process):
        def is_gone():
            try:
                os.killpg(process.pid, 0)
                return False
            except ProcessLookupError:
                return True

        wait_until(is_gone, 60)

    def test_signals_that_ask_it_to_end_leave_nothing(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number), self.preview_half_way() as process:
                process.send_signal(number)
                self.assertEqual(process.wait(60), -number)
                self.wait_for_end_of_group(process)
                self.assertEqual(self.tree(self.folder), self.before)
            shutil.rmtree(self.source / "UILang")

    def test_killed_outright_it_leaves_no_pictures_and_no_process(self):
        with self.preview_half_way() as process:
            # Whatever does not end by itself ends all the same.
            os.killpg(process.pid, signal.SIGSTOP)
            process.kill()
            process.wait()
            self.wait_for_end_of_group(process)
            self.assertFalse((self.folder / "out").exists())
            # Whoever works there next removes what was left.
            self.run_zpkpack("new", "Next")
            shutil.rmtree(self.folder / "Next")
            self.assertEqual(self.tree(self.folder), self.before)

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_is_told_and_leaves_nothing(self):
        with self.disk("size=600k") as disk:
            done = self.preview(self.source, disk / "out", status=1)
            # By the picture that found none: whatever comes behind it finds none, too.
            self.assertIn(b".png: No space left on device", done.stderr)
            self.assertEqual(os.listdir(disk), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
