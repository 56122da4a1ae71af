# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The launcher on the parts that its bundle carries: what it takes from the machine, what it leaves there, and
what becomes of a run when a part is not as it should be."""

import contextlib
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import textwrap
import unittest

from support import TEMPLATE, wait_until, write
from windows import items
from windows_case import WindowTestCase

FRAMEWORKS = "Contents/Frameworks"
LOADER = "ld-linux-x86-64.so.2"
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"

# What a foreign desktop may have set. Many of these alone would end the toolkit or lead it astray; the others
# show that nothing is taken away, added or moved.
HOSTILE = {
    "LD_PRELOAD": "/no/such/library.so",
    "LD_LIBRARY_PATH": "/no/such/folder:",
    "GLIBC_TUNABLES": "glibc.malloc.check=3",
    "QT_PLUGIN_PATH": "/usr/lib/x86_64-linux-gnu/qt6/plugins",
    "QT_QPA_PLATFORM_PLUGIN_PATH": "/no/such/folder",
    "QT_QPA_PLATFORMTHEME": "gtk3",
    "QT_STYLE_OVERRIDE": "Windows",
    "QT_IM_MODULE": "fcitx",
    "QT_FATAL_WARNINGS": "1",
    "FONTCONFIG_FILE": "/no/such/file",
    "FONTCONFIG_PATH": "/no/such/folder",
    "FONTCONFIG_SYSROOT": "/no/such/folder",
    "XKB_CONFIG_ROOT": "/no/such/folder",
    "LOCPATH": "/no/such/folder",
    "GCONV_PATH": "/no/such/folder",
    "G_DEBUG": "fatal-warnings",
    "DESKTOP_STARTUP_ID": "desktop_TIME1",
    "EMPTY": "",
    "BYTES": os.fsdecode(b"\xff\xfe two\nlines ="),
    "ZEPHYRKIT_KEPT_LD_DEBUG": "all",
}

KEEPS_ENVIRONMENT = '#!/bin/sh\ncat /proc/$$/environ > "$ZPK_TEST_RECORD"\n'

# Below an empty folder in the place of each of those that come first, up to "--".
WITHOUT_FOLDERS = textwrap.dedent(
    """\
    set -e
    while [ "$1" != -- ]; do
        mount -t tmpfs none "$1"
        shift
    done
    shift
    exec "$@"
    """
)


# The desktop is told of the setup program's start.
STARTED = b"DESKTOP_STARTUP_ID"


def without(*folders):
    """What goes before a program that is to find those folders empty; those that are not there do not count."""
    there = [folder for folder in folders if os.path.isdir(folder)]
    return ["unshare", "-m", "sh", "-c", WITHOUT_FOLDERS, "sh", *there, "--"]


@unittest.skipUnless((TEMPLATE / FRAMEWORKS).is_dir(), "this build shares the machine's libraries")
class CarriedPartsTestCase(WindowTestCase):
    def traced(self, bundle, calls, **variables):
        """The run's system calls that went well, one a line."""
        trace = self.folder / "trace"
        command = ["strace", "-f", "-qq", "-z", "-s", "4096", "-e", "trace=" + calls, "-o", str(trace)]
        self.assert_shows_windows(bundle, command=command, **variables)
        return trace.read_text(errors="surrogateescape").splitlines()

    def assert_shows_windows(self, bundle, **options):
        run = self.start(bundle, **options)
        run.wait()
        self.assertEqual(run.titles, [run.texts["FILE_EXTRACT"]])
        return run

    def replace(self, bundle, part, contents):
        """A new file, for the old one is shared with the template; gives the old one's contents."""
        path = bundle / "Contents" / part
        old = path.read_bytes()
        mode = path.stat().st_mode
        path.unlink()
        if contents is not None:
            write(path, contents, mode)
        return old


class EnvironmentTest(CarriedPartsTestCase):
    """The setup program finds what the launcher was started with, and the launcher's toolkit does not."""

    def environment_package(self):
        write(self.source / "Data/setup", KEEPS_ENVIRONMENT, 0o755)
        self.startup()
        return self.pack()

    def assert_found(self, expected, *more):
        """What was to be there, in its order, and entries of those names behind it instead of any others."""
        found = self.record_path.read_bytes().split(b"\0")
        entries = [os.fsencode("%s=%s" % (name, value)) for name, value in expected.items() if os.fsencode(name) not in more]
        self.assertEqual(found[: len(entries)], entries)
        self.assertEqual([entry.split(b"=")[0] for entry in found[len(entries) :]], [*more, b""])

    def test_with_windows(self):
        self.assert_shows_windows(self.environment_package(), **HOSTILE)
        self.assert_found(self.environment(**self.desktop.variables, **HOSTILE), STARTED)

    def test_with_windows_and_without_a_session(self):
        session = {"XDG_RUNTIME_DIR": None, "DBUS_SESSION_BUS_ADDRESS": None}
        self.assert_shows_windows(self.environment_package(), **session)
        self.assert_found(self.environment(**{**self.desktop.variables, **session}), STARTED)

    def test_on_the_terminal(self):
        self.launch(self.environment_package(), **HOSTILE)
        self.assert_found(self.environment(**HOSTILE))

    def test_where_windows_fail(self):
        platform = {"QT_QPA_PLATFORM": "offscreen"}
        done = self.launch(self.environment_package(), **platform, **HOSTILE)
        self.assertIn("100%", done.stdout)
        self.assert_found(self.environment(**platform, **HOSTILE))

    def test_nothing_of_the_machine_is_loaded(self):
        lines = self.traced(self.simple_package(), "openat,open,execve", **HOSTILE)
        # The setup program is the machine's.
        end = next(number for number, line in enumerate(lines) if re.search('execve\\("[^"]*/Data/setup"', line))
        own = [line for line in lines[:end] if "execve" not in line]
        libraries = re.findall(r'"([^"]*\.so(?:\.[^"]*)?)"', "\n".join(own))
        self.assertGreater(len(libraries), 50)
        self.assertEqual([path for path in libraries if ".app/Contents/" not in path], [])


class NothingStaysTest(CarriedPartsTestCase):
    """What a toolkit makes for itself is not left on the machine."""

    def setUp(self):
        super().setUp()
        self.home = self.folder / "home"
        self.home.mkdir()
        self.variables = {"HOME": str(self.home), "XDG_CACHE_HOME": None, "XDG_DATA_HOME": None}

    def test_run_time_folder(self):
        bundle = self.simple_package()
        anothers = self.folder / "anothers"
        anothers.mkdir()
        anothers.chmod(0o755)
        for folder in (None, "", str(anothers), str(self.folder / "nowhere")):
            with self.subTest(folder):
                self.assert_shows_windows(bundle, **self.variables, XDG_RUNTIME_DIR=folder)
                self.assertEqual(os.listdir(self.home), [])
                self.assertEqual(os.listdir(anothers), [])

    def test_no_message_bus_is_started(self):
        session = {"DBUS_SESSION_BUS_ADDRESS": None}
        lines = self.traced(self.simple_package(), "execve", **self.variables, **session)
        programs = [pathlib.Path(path).name for path in re.findall(r'execve\("([^"]*)"', "\n".join(lines))]
        self.assertLessEqual({"Zephyrkit", LOADER, "ditto", "setup"}, set(programs))
        self.assertEqual([name for name in programs if name.startswith("dbus")], [])
        self.assertEqual(os.listdir(self.home), [])

    @unittest.skipUnless(os.path.exists(FONT), "the font of the test is not installed")
    def test_notes_of_fonts(self):
        # A folder of fonts that nobody has looked through.
        fonts = self.home / ".local/share/fonts"
        fonts.mkdir(parents=True)
        shutil.copy(FONT, fonts / "Another.ttf")
        # Notes on it by a library of a later version, and some that nobody can read by the name of the carried one's.
        notes = self.home / ".cache/fontconfig"
        name = hashlib.md5(os.fsencode(fonts)).hexdigest() + "-le64.cache-"
        kept = {name + "11": b"of another version", name + "8": b"no notes", "CACHEDIR.TAG": b"Signature"}
        for each, contents in kept.items():
            write(notes / each, contents)
        machines = pathlib.Path("/var/cache/fontconfig")
        before = sorted(os.listdir(machines)) if machines.is_dir() else []
        lines = self.traced(self.simple_package(), "openat,open", **self.variables)
        self.assertTrue([line for line in lines if "/home/.local/share/fonts" in line], "it was to be found")
        self.assertTrue([line for line in lines if "cache-8" in line and str(notes) in line], "they were to be found")
        self.assertEqual(sorted(os.listdir(self.home)), [".cache", ".local"])
        self.assertEqual(os.listdir(notes.parent), ["fontconfig"])
        self.assertEqual({path.name: path.read_bytes() for path in notes.iterdir()}, kept)
        self.assertEqual(sorted(os.listdir(machines)) if machines.is_dir() else [], before)


class BrokenPartsTest(CarriedPartsTestCase):
    """A part that is missing or damaged is a line on standard error and a run on the terminal."""

    def setUp(self):
        super().setUp()
        self.bundle = self.simple_package()

    def assert_terminal(self, *told):
        done = self.launch(self.bundle, **self.desktop.variables)
        self.assertEqual(self.record()["arguments"], ["--test"])
        self.assertIn("100%", done.stdout)
        for text in told:
            self.assertIn(text, done.stderr)
        self.record_path.unlink()

    def assert_goes_on_with(self, part, contents, *told):
        with self.subTest(part, contents=None if contents is None else contents[:8]):
            old = self.replace(self.bundle, part, contents)
            self.assert_terminal(*told)
            path = self.bundle / "Contents" / part
            path.unlink(missing_ok=True)
            write(path, old, 0o755)

    def contents(self, part):
        return (self.bundle / "Contents" / part).read_bytes()

    def test_missing(self):
        for part in (LOADER, "Zephyrkit-desktop", "libQt6Core.so.6", "Parts", "fonts/DejaVuSans.ttf"):
            self.assert_goes_on_with("Frameworks/" + part, None, "no windows: ", part + ": No such file")
        self.assert_goes_on_with("PlugIns/ZPKDesktop.so", None, "no windows: ", "ZPKDesktop.so: No such file")

    def test_missing_and_not_listed(self):
        parts = (self.bundle / FRAMEWORKS / "Parts").read_text()
        users = {"libQt6UiTools.so.6": "ZPKDesktop.so", "libz.so.1": None, "libstdc++.so.6": "Zephyrkit-desktop"}
        for part, user in users.items():
            self.assertIn(part + "\n", parts)
            self.replace(self.bundle, "Frameworks/Parts", parts.replace(part + "\n", "").encode())
            told = "needs %s, which is not carried" % part
            self.assert_goes_on_with("Frameworks/" + part, None, "no windows: ", user + ": " + told if user else told)

    def test_cut_short_or_something_else(self):
        parts = [LOADER, "Zephyrkit-desktop", "libc.so.6", "libQt6Gui.so.6", "plugins/platforms/libqxcb.so"]
        for part in (*("Frameworks/" + name for name in parts), "PlugIns/ZPKDesktop.so"):
            whole = self.contents(part)
            self.assert_goes_on_with(part, whole[: len(whole) // 2], "no windows: ", part.split("/")[-1] + ": cut short")
        another = whole[:18] + b"\xb7\0" + whole[20:]
        for damaged in (b"", b"x", whole[:-1], another, b"#!/bin/sh\n" * 20):
            self.assert_goes_on_with(part, damaged, "no windows: ", "ZPKDesktop.so: ")

    def test_sound_libraries_that_are_others(self):
        another = self.contents("Frameworks/libz.so.1")
        self.assert_goes_on_with("PlugIns/ZPKDesktop.so", another, "no windows: ", "ZPKCreateDesktopFrontEnd")
        self.assert_goes_on_with("Frameworks/libQt6UiTools.so.6", another, "no windows: ", "undefined symbol")
        self.assert_goes_on_with("Frameworks/plugins/platforms/libqxcb.so", another, "Cannot use the desktop: ")
        self.assert_goes_on_with("Frameworks/libstdc++.so.6", another, "no windows: ", "the carried loader does not start it")

    def test_libraries_that_crash(self):
        for part in ("Frameworks/libQt6Core.so.6", "Frameworks/libQt6Gui.so.6", "Frameworks/libQt6XcbQpa.so.6"):
            whole = self.contents(part)
            # Whatever is called in there is no instruction.
            start = len(whole) // 4
            garbled = whole[:start] + b"\x06" * (len(whole) // 2) + whole[start + len(whole) // 2 :]
            self.assert_goes_on_with(part, garbled, "no windows: ")

    def test_none_at_all(self):
        shutil.rmtree(self.bundle / FRAMEWORKS)
        self.assert_terminal("no windows: ")

    def test_platform_that_is_not_carried(self):
        done = self.launch(self.bundle, **self.desktop.variables, QT_QPA_PLATFORM="vnc")
        self.record()
        self.assertIn("Cannot use the desktop: ", done.stderr)


class ReplacedPartsTest(CarriedPartsTestCase):
    """A vendor replaces a carried library by another build of it, as for a security fix."""

    def test_in_a_bundle_that_is_out(self):
        bundle = self.simple_package()
        names = ("libz.so.1", "libpng16.so.16", "libX11.so.6")
        for name in names:
            theirs = pathlib.Path("/usr/lib/x86_64-linux-gnu", name)
            # What follows the last section is nobody's: the file is another one, whatever was taken out of ours.
            build = theirs.read_bytes() + b"another build"
            self.assertNotEqual(build, self.replace(bundle, "Frameworks/" + name, build))
        trace = self.traced(bundle, "openat")
        for name in names:
            self.assertTrue(any(f"{FRAMEWORKS}/{name}" in line for line in trace), name)


class ProcessTest(CarriedPartsTestCase):
    """The process is the one that was started, and shows itself under the launcher's name."""

    def test_name_and_class(self):
        bundle = self.package()
        gate = self.hold(bundle, "Data.dat")
        run = self.start(bundle)
        gate.wait_reached()
        run.window(run.texts["FILE_EXTRACT"])
        process = pathlib.Path("/proc/%d" % run.process.pid)
        self.assertEqual((process / "comm").read_text(), "Zephyrkit\n")
        self.assertEqual(os.readlink(process / "exe"), str(bundle / FRAMEWORKS / LOADER))
        (window,) = self.desktop.listed()
        shown = self.desktop.run("xprop", "-id", window, "WM_CLASS", "_NET_WM_PID")
        identifier = "com.example." + self.name
        self.assertIn('WM_CLASS(STRING) = "%s", "%s"\n' % (identifier, identifier), shown)
        self.assertIn("_NET_WM_PID(CARDINAL) = %d\n" % run.process.pid, shown)
        gate.open()
        run.wait()

    def test_second_start_by_another_way_to_the_bundle(self):
        bundle = self.package()
        gate = self.hold(bundle, "Data.dat")
        first = self.start(bundle)
        gate.wait_reached()
        # A window that comes later would count as the second one's.
        first.window(first.texts["FILE_EXTRACT"])
        link = self.folder / "Link.app"
        link.symlink_to(bundle)
        other = self.folder / "tmp2"
        other.mkdir(mode=0o700)
        second = self.start(link, TMPDIR=str(other), XDG_RUNTIME_DIR=None)
        second.wait()
        self.assertEqual((second.shown, os.listdir(other)), ([], []))
        gate.open()
        first.wait()
        self.assert_installed(first)


@unittest.skipUnless(os.geteuid() == 0, "hiding folders of the machine takes root")
class BareMachineTest(CarriedPartsTestCase):
    """Windows on a machine that lacks what one takes for granted."""

    FONTS = ("/usr/share/fonts", "/usr/local/share/fonts", "/etc/fonts", "/var/cache/fontconfig")

    def fonts_opened(self, *hidden):
        trace = self.folder / "trace"
        command = [*without(*hidden), "strace", "-f", "-qq", "-z", "-e", "trace=openat,open", "-o", str(trace)]
        self.assert_shows_windows(self.simple_package(), command=command, HOME=str(self.folder))
        return re.findall(r'"([^"]*\.(?:ttf|otf|pfb|t1))"', trace.read_text(errors="surrogateescape"))

    def colours_of_words_without_fonts(self, bundle, at_least):
        """How many colours the words of the progress window are drawn in, once there are that many."""
        gate = self.hold(bundle, "Data.dat")
        run = self.start(bundle, command=without(*self.FONTS))
        gate.wait_reached()
        label = items(run.window(run.texts["FILE_EXTRACT"]), "label")[0]
        wait_until(lambda: self.desktop.colours(*label["bounds"]) >= at_least, 20)
        count = self.desktop.colours(*label["bounds"])
        gate.open()
        run.wait()
        return count

    # Letters have soft edges; the boxes that stand for those that no font has are of two colours.

    def test_without_fonts_the_carried_one_is_taken(self):
        self.assertEqual(
            set(self.fonts_opened(*self.FONTS)), {str(self.folder / "TestSetup.app" / FRAMEWORKS / "fonts/DejaVuSans.ttf")}
        )
        # What is opened need not be what is drawn with.
        self.colours_of_words_without_fonts(self.package(name="Words.app"), at_least=11)

    def test_words_are_boxes_where_the_carried_font_is_none(self):
        bundle = self.package()
        font = bundle / FRAMEWORKS / "fonts/DejaVuSans.ttf"
        size = font.stat().st_size
        font.unlink()
        font.write_bytes(bytes(size))
        self.assertLess(self.colours_of_words_without_fonts(bundle, at_least=2), 11)

    def test_script_that_no_font_has_is_told_once(self):
        bundle = self.package('<UIMLog Signature="x"/>', ["देव", "かな", "देव 2", "Latin"])
        told = self.folder / "told"
        run = self.start(bundle, command=[*without(*self.FONTS), "sh", "-c", 'exec "$0" 2> "$TOLD"'], TOLD=str(told))
        run.alert()
        self.desktop.key("Return")
        run.wait()
        lines = [line for line in told.read_text().splitlines() if line.startswith("No font")]
        boxes = "No font has U+%s of the %s script: boxes stand for such letters"
        self.assertEqual(lines, [boxes % ("0926", "Devanagari"), boxes % ("304B", "Hiragana")])

    def test_with_fonts_it_is_not(self):
        opened = self.fonts_opened()
        self.assertEqual([path for path in opened if FRAMEWORKS in path], [])
        self.assertNotEqual(opened, [])

    def test_fonts_without_a_word_of_where_they_are(self):
        opened = self.fonts_opened("/etc/fonts")
        self.assertEqual([path for path in opened if FRAMEWORKS in path], [])
        self.assertNotEqual(opened, [])

    def test_without_keyboard_data_and_locales(self):
        hidden = ("/usr/share/X11", "/usr/lib/locale", "/usr/share/locale", "/usr/share/icons", "/usr/share/mime")
        self.assert_shows_windows(self.package(), command=without(*hidden))

    @unittest.skipUnless(shutil.which("weston"), "weston is not installed")
    def test_compositor_without_keyboard_data(self):
        with self.compositor() as variables:
            bundle = self.package()
            gate = self.hold(bundle, "Data.dat")
            run = self.start(bundle, command=without("/usr/share/X11"), DISPLAY=None, **variables)
            gate.wait_reached()
            title = run.texts["FILE_EXTRACT"]
            wait_until(lambda: [window for window in run.windows() if window["name"] == title], 30)
            gate.open()
            run.wait()
            self.record()

    @contextlib.contextmanager
    def compositor(self):
        runtime = self.folder / "runtime"
        # In a window of the desktop, so that it has a keyboard.
        weston = subprocess.Popen(
            ["weston", "--backend=x11-backend.so", "--socket=test-0", "--idle-time=0", "--no-config"],
            env=dict(self.desktop.environment, XDG_RUNTIME_DIR=str(runtime)),
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        try:
            wait_until((runtime / "test-0").exists, 20)
            yield {"WAYLAND_DISPLAY": "test-0", "XDG_RUNTIME_DIR": str(runtime)}
        finally:
            weston.terminate()
            weston.wait()


if __name__ == "__main__":
    unittest.main(verbosity=2)
