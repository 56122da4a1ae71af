# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The drawing of a package, of which the picture of its windows is made."""

import os
import pathlib
import re
import resource
import shutil
import subprocess
import unittest

from check_words_test import WordsTestCase
from packager_case import CommandTestCase
from support import BUILD, light_template, link_or_copy, png_picture, wait_until, write
from windows_case import WindowTestCase

HEAD = '<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink"'
RED, BLUE, GREEN, CLEAR = "#ff0000ff", "#0000ffff", "#00ff00ff", "#00000000"

# Two halves, and a green spot in the middle of the right one that no rounding reaches.
HALVES = (
    f'{HEAD} viewBox="0 0 16 16">\n'
    '<defs><path id="half" d="M0 0h8v16H0z"/></defs>\n'
    '<use xlink:href="#half" fill="red"/>\n<g transform="translate(8)"><use xlink:href="#half" fill="blue"/></g>\n'
    '<circle cx="12" cy="8" r="2" fill="lime"/>\n</svg>\n'
)
# A heavy line, drawn as often as a drawing may have elements.
LINE = "".join(f"M0 {row / 99}C9 0 0 9 9 {row / 99}" for row in range(99))
ENDLESS = (f'<path id="a" d="{LINE}" stroke="red" stroke-width="9" stroke-dasharray=".1 .2"/>'
           + '<use xlink:href="#a"/>' * 9000)
SPOT = "data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg=="


def colour(picture, x, y):
    """Red, green, blue and how opaque, of a point."""
    command = ["convert", picture, "-depth", "8", "-crop", f"1x1+{x}+{y}", "+repage", "rgba:-"]
    return "#" + subprocess.check_output(command).hex()


def contents_of(path):
    """Of a process that may be gone."""
    try:
        return path.read_bytes()
    except OSError:
        return b""


class DrawingTestCase(CommandTestCase):
    def setUp(self):
        super().setUp()
        self.light = light_template()

    def build(self, drawing, name="Made.app", **settings):
        """The picture in a bundle of the source with this drawing, and what was said."""
        write(self.source / "Icon.svg", drawing)
        bundle = self.folder / name
        shutil.rmtree(bundle, ignore_errors=True)
        done = self.run_zpkpack("build", self.source, "-o", name, "--template", self.light, **settings)
        return bundle / "Contents/Resources/Icon.png", done


class DrawingTest(DrawingTestCase):
    def test_the_picture_is_the_drawing(self):
        picture, _ = self.build(HALVES)
        self.assertEqual(subprocess.check_output(["identify", "-format", "%w %h", picture]), b"256 256")
        self.assertEqual(picture.stat().st_mode & 0o7777, 0o644)
        points = {(10, 10): RED, (120, 250): RED, (135, 5): BLUE, (250, 250): BLUE, (192, 128): GREEN, (160, 128): GREEN}
        self.assertEqual({point: colour(picture, *point) for point in points}, points)
        # The drawing itself stays with the vendor.
        self.assertEqual(list(picture.parent.glob("*.svg")), [])

    def test_another_shape_stands_in_the_middle_of_a_square(self):
        points = {(128, 32): CLEAR, (128, 223): CLEAR, (2, 128): RED, (253, 128): RED, (128, 70): RED, (128, 186): RED}
        for size in ('viewBox="-10 5 40 20" width="9" height="9"', 'width="40" height="20px"'):
            place = 'x="-10" y="5"' if "viewBox" in size else ""
            picture, done = self.build(f'{HEAD} {size}><rect {place} width="40" height="20" fill="red"/></svg>')
            self.assertEqual({point: colour(picture, *point) for point in points}, points, size)

    def test_large_areas_gradients_strokes_and_a_picture_inside(self):
        picture, _ = self.build(
            f'{HEAD} viewBox="0 0 8 8"><linearGradient id="a"><stop offset="0" stop-color="red"/>'
            '<stop offset="1" stop-color="blue"/></linearGradient><rect width="8" height="8" fill="url(#a)" opacity=".9"/>'
            f'<path d="M0 0L8 8" stroke="lime"/><image x="6" y="1" width="1" height="1" xlink:href="{SPOT}"/></svg>')
        self.assertEqual(colour(picture, 64, 64), GREEN)
        self.assertRegex(colour(picture, 5, 128), "#[ef].0.0.e5")
        self.assertRegex(colour(picture, 250, 128), "#0.0.[ef].e5")
        self.assertNotRegex(colour(picture, 208, 48), "#.*e5")

    def test_the_same_bytes_whatever_is_around_it(self):
        one, _ = self.build(HALVES, "One.app")
        environment = {"PATH": "/usr/bin:/bin", "LC_ALL": "ar_EG.UTF-8", "QT_LOGGING_RULES": "*=true", "LD_BIND_NOW": "1",
                       "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX2,-AVX,-FMA", "QT_SCALE_FACTOR": "2"}
        two, _ = self.build(HALVES, "Two.app", env=environment)
        self.assertEqual(one.read_bytes(), two.read_bytes())
        # What is extracted builds to the same.
        self.run_zpkpack("extract", "One.app", "-o", "extracted")
        self.assertEqual((self.folder / "extracted/Icon.png").read_bytes(), one.read_bytes())
        self.assertFalse((self.folder / "extracted/Icon.svg").exists())

    def test_a_picture_beside_it_counts(self):
        write(self.source / "Icon.png", png_picture(64, 64))
        picture, done = self.build(HALVES)
        self.assertEqual(picture.read_bytes(), png_picture(64, 64))
        # Nobody looks at what nobody sees.
        write(self.source / "Icon.svg", "no drawing")
        done = self.run_zpkpack("check", self.source, status=0)
        self.assertEqual([line for line in done.stdout.decode().splitlines() if "Icon" in line],
                         [f"{self.source}/Icon.svg:1:1: warning: it is not shown: Icon.png is beside it [icon-twice]"])

    def test_a_package_without_windows_has_no_use_for_it(self):
        write(self.source / "Icon.svg", HALVES)
        self.small_package("Bare.app", "--without-windows")
        self.assertFalse((self.folder / "Bare.app/Contents/Resources/Icon.png").exists())

    def test_a_preview_and_one_file_have_the_picture(self):
        self.run_zpkpack("preview", self.source, "-o", "plain", "--lang", "en")
        write(self.source / "Icon.svg", HALVES)
        self.run_zpkpack("preview", self.source, "-o", "drawn", "--lang", "en")
        about = [self.folder / folder / "en/about.png" for folder in ("plain", "drawn")]
        greens = [subprocess.check_output(["convert", path, "-fill", "white", "+opaque", "lime", "-format", "%k", "info:"])
                  for path in about]
        self.assertEqual(greens, [b"1", b"2"])
        self.run_zpkpack("build", self.source, "-o", "Made.run", "--template", self.light)
        self.run_zpkpack("extract", "Made.run", "-o", "extracted")
        self.assertEqual(colour(self.folder / "extracted/Icon.png", 192, 128), GREEN)


class NoDrawingTest(DrawingTestCase):
    """Where no picture can be made, somebody is told why, and there is no package."""

    def refused(self, drawing, **settings):
        write(self.source / "Package.strings",
              (self.source / "Package.strings").read_text() + "# zpkpack: allow icon icon-drawing\n")
        picture, done = self.build(drawing, status=1, **settings)
        self.assertFalse(picture.exists() or picture.parents[2].exists())
        self.assertRegex(done.stderr.decode(), r"zpkpack: error: \S+/source/Icon\.svg: no picture can be made of it.*;"
                                               r" put a picture, Icon\.png, beside it\n\Z")
        return done.stderr.decode()

    def test_what_the_drawing_lacks(self):
        rows = [
            (f'{HEAD} viewBox="0 0 9 9">\n <radialGradient id="a"/>\n</svg>', "zephyrkit-draw: 2:25: Could not parse node: radialGradient\n"),
            (f'{HEAD} viewBox="0 0 9 9"><text>a</text></svg>', ": Aborted;"),
            (f'{HEAD} viewBox="0 0 9 9"/>', "there is nothing to see in it"),
            (f'{HEAD} viewBox="0 0 9 9"><rect fill="none" width="9" height="9"/></svg>', "there is nothing to see in it"),
            ("no drawing", "zephyrkit-draw: it is no drawing\n"),
            ("<svg>", "zephyrkit-draw: it is no drawing\n"),
        ]
        for drawing, words in rows:
            with self.subTest(drawing):
                # Nobody's wish to be told less is obeyed.
                self.assertIn(words, self.refused(drawing, env={**os.environ, "QT_LOGGING_RULES": "*=false"}))

    def test_nothing_outside_of_it_is_read(self):
        write(self.folder / "secret.png", png_picture(9, 9))
        for address in (f"{self.folder}/secret.png", f"file://{self.folder}/secret.png"):
            said = self.refused(f'{HEAD} viewBox="0 0 9 9"><rect width="9" height="9"/>'
                                f'<image width="9" height="9" xlink:href="{address}"/></svg>')
            self.assertIn("Could not create image from", said)
        entity = f'<!DOCTYPE svg [<!ENTITY a SYSTEM "file://{self.source}/Info/Startup.xml">]>'
        self.refused(f'{entity}\n{HEAD} viewBox="0 0 9 9">&a;<g/></svg>')

    def test_drawing_without_end(self):
        """Ended by the processor time that it takes, here less than elsewhere."""
        said = self.refused(f'{HEAD} viewBox="0 0 9 9">{ENDLESS}</svg>', preexec_fn=limit_processor_time)
        self.assertIn("since drawing it takes too long;", said)

    def test_bounds_of_the_program_that_draws(self):
        write(self.source / "Icon.svg", f'{HEAD} viewBox="0 0 9 9">{ENDLESS}</svg>')
        with subprocess.Popen([BUILD / "zpkpack", "build", self.source, "-o", "Made.app", "--template", self.light],
                              cwd=self.folder, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
            try:
                limits = wait_until(lambda: self.limits_while_drawing(), 60)
            finally:
                process.terminate()
        self.assertEqual(limits, {"cpu time": 5, "data size": 256 << 20, "file size": 4 << 20, "open files": 0,
                                  "core file size": 0})
        # It ends with the packager.
        wait_until(lambda: not self.drawing_processes(), 60)
        self.assertEqual(list(self.folder.glob(".zpk-*")), [])

    def drawing_processes(self):
        asked = str(self.source / "Icon.svg").encode()
        return [path.parent for path in pathlib.Path("/proc").glob("[0-9]*/cmdline") if asked in contents_of(path)]

    def limits_while_drawing(self):
        for process in self.drawing_processes():
            rows = re.findall(r"^Max ([a-z ]+?) {2,}(\d+) +\2 ", contents_of(process / "limits").decode(), re.M)
            limits = {name: int(value) for name, value in rows}
            # The last that is lowered.
            if limits.get("core file size") == 0:
                return {name: limits.get(name) for name in ("cpu time", "data size", "file size", "open files", "core file size")}
        return None

    def test_without_the_program_that_draws(self):
        folder = self.folder / "bin"
        folder.mkdir()
        for name in ("zpkpack", "zephyrkit-run"):
            link_or_copy(BUILD / name, folder / name)
        write(self.source / "Icon.svg", HALVES)
        rows = [(["build", "-o", "Made.app", "--template", self.light], 1), (["preview", "-o", "out", "--template", self.light], 1),
                (["build", "-o", "Bare.app", "--template", self.light, "--without-windows"], 0)]
        for (command, *options), status in rows:
            done = subprocess.run([folder / "zpkpack", command, self.source, *options], capture_output=True, text=True,
                                  cwd=self.folder, timeout=60)
            self.assertEqual(done.returncode, status, done.stderr)
            self.assertEqual(f"{self.source}/Icon.svg: no picture can be made of it: zpkpack lacks its program zephyrkit-draw;"
                             " put a picture, Icon.png, beside it" in done.stderr, status == 1, done.stderr)
        self.assertFalse((self.folder / "Made.app").exists() or (self.folder / "out").exists())


def limit_processor_time():
    resource.setrlimit(resource.RLIMIT_CPU, (1, 4))


class DrawingWordsTest(WordsTestCase):
    """What the check says of a drawing."""

    def said(self, drawing):
        self.write("Icon.svg", drawing if isinstance(drawing, bytes) else drawing.encode())
        return [row[1:] for row in self.found()]

    def test_sound_drawings(self):
        rows = [
            HALVES,
            HALVES.encode("utf-16"),
            '<?xml version="1.0" encoding="ISO-8859-1"?>\n<!DOCTYPE svg PUBLIC "-//W3C//DTD SVG 1.1//EN" "http://www.w3.org/'
            f'Graphics/SVG/1.1/DTD/svg11.dtd">\n{HEAD} width="48" height="48px"/>',
            '<s:svg xmlns:s="http://www.w3.org/2000/svg" viewBox="-1,-1 3e1 30"><s:title>é</s:title></s:svg>',
            f'{HEAD} width="100%" viewBox="0 0 512 511.999"><image xlink:href="{SPOT}"/><a xlink:href="http://a"/></svg>',
        ]
        for drawing in rows:
            with self.subTest(drawing):
                self.assertEqual(self.said(drawing), [])

    def test_without_a_size(self):
        for attributes in ("", 'width="9"', 'width="100%" height="100%"', 'width="9em" height="9em"', 'viewBox="0 0 9"',
                           'viewBox="0 0 0 9" width="1"', 'viewBox="0 0 -9 9"', 'viewBox="0 0 9 -9"', 'width="0" height="0"', 'viewBox="0 0 inf inf"'):
            with self.subTest(attributes):
                self.assertEqual(self.said(f"{HEAD} {attributes}/>"), [("1:1", "it has no size; give it a viewBox", "icon")])

    def test_shape(self):
        self.assertEqual(self.said(f'{HEAD} viewBox="0 0 32 16.5" width="9" height="9"/>'), [("1:1", "it is 32 by 16.5", "icon-shape")])
        self.assertEqual(self.said(f'{HEAD} width="10mm" height="20mm"/>'), [("1:1", "it is 10 by 20", "icon-shape")])

    def test_what_is_no_drawing(self):
        rows = [
            ("", "1:1", "it is no drawing: no element found"),
            ("<svg>\n<g></svg>", "2:6", "it is no drawing: mismatched tag"),
            ("<html/>", "1:1", 'it is no drawing: it begins with "html"'),
            (b"\x1f\x8b\x08\x00", "1:1", "it is no drawing: not well-formed (invalid token)"),
            ("<a>" * 1001, "1:3001", "it is no drawing: its elements are nested too deeply"),
        ]
        for drawing, place, text in rows:
            with self.subTest(drawing[:20]):
                found = self.said(drawing)
                self.assertEqual((found[-1][1:], found[-1][0]), ((text, "icon"), place))

    def test_parts_that_are_not_drawn(self):
        body = ("<defs>\n<clipPath id='a'/><mask/>\n<clipPath/><filter/><pattern/><marker/><symbol/><foreignObject/></defs>\n"
                "<text/><g><animate/>\n<image xlink:href='a.png'/><use xlink:href='b.svg#c'/>"
                "<image href='data:image/jpeg;base64,'/><text/></g><animate/>")
        found = self.said(f'{HEAD} viewBox="0 0 9 9">{body}</svg>')
        self.assertEqual([(place.partition(":")[0], text) for place, text, check in found if check == "icon-drawing"],
                         [(line, f'"{name}" is left out') for line, name in (
                             ("2", "clipPath"), ("2", "mask"), ("3", "filter"), ("3", "pattern"), ("3", "marker"),
                             ("3", "symbol"), ("3", "foreignObject"))])
        outside = '"%s" refers to something that is not drawn with it'
        self.assertEqual([(place.partition(":")[0], text) for place, text, check in found if check == "icon"],
                         [("4", "text looks otherwise on every machine; turn it into paths"),
                          ("4", '"animate" moves something, and a picture stands still'),
                          ("5", outside % "image"), ("5", outside % "use"), ("5", outside % "image")])

    def test_many_elements_and_large_files(self):
        # The root counts.
        for number, is_said in ((9999, False), (10000, True)):
            found = self.said(f'{HEAD} viewBox="0 0 9 9">{"<g/>" * number}</svg>')
            self.assertEqual([row[1:] for row in found], [("it has more than 10000 elements", "icon")] * is_said)
        found = self.said(f'{HEAD} viewBox="0 0 9 9">{" " * (1 << 20)}</svg>')
        self.assertEqual([row[2] for row in found], ["too-large"])


class DrawnIconTest(WindowTestCase):
    """What the desktop is given."""

    def test_the_windows_have_the_picture(self):
        write(self.source / "Icon.svg", HALVES)
        bundle = self.package()
        gate = self.hold(bundle, "Data.dat")
        run = self.start(bundle)
        gate.wait_reached()
        run.window(run.texts["FILE_EXTRACT"])
        (window,) = self.desktop.listed()
        shown = self.desktop.run("xprop", "-id", window, "-notype", "-f", "_NET_WM_ICON", "32x", "_NET_WM_ICON")
        numbers = [int(number, 16) for number in re.findall(r"0x[0-9a-f]+", shown.partition("=")[2])]
        sides = set()
        while numbers:
            side = numbers[0]
            points = numbers[2 : 2 + side * side]
            sides.add(side)
            row = points[side // 2 * side : (side // 2 + 1) * side]
            self.assertEqual([row[side // 8], row[3 * side // 4], points[-1]], [0xFFFF0000, 0xFF00FF00, 0xFF0000FF], side)
            del numbers[: 2 + side * side]
        self.assertEqual(sides, {16, 22, 24, 32, 48, 64, 96, 128})
        gate.open()
        run.wait()


if __name__ == "__main__":
    unittest.main(verbosity=2)
