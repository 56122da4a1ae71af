# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the bus of assistive tools and the X server tell of the windows: announced, mapped, as large as asked for."""

import json
import re
import subprocess
import unittest

from support import wait_until, x_server
from windows import items
from windows_case import WindowTestCase
from windows_disc_test import DriveTestCase

# A search in vain is over at once, unless this machine has other things to do just then.
MOST_SEARCHES = 10


class AnnouncedTest(WindowTestCase):
    """For a screen reader, which speaks when it is told of something."""

    def hear(self):
        log = self.folder / "heard"
        self.listen("accessible_events.py", log)
        return lambda: [json.loads(line) for line in log.read_text().split("\n")[1:-1]]

    def test_alert(self):
        heard = self.hear()
        run = self.start(self.package('<UIMLog Signature="x"/>'))
        run.alert()
        told = [
            ["window:activate", "alert", self.name, 0],
            ["object:state-changed:focused", "push button", run.texts["OK"], 1],
        ]
        wait_until(lambda: all(row in heard() for row in told), 60)
        # Once, and the window before what is in it.
        self.assertEqual([row for row in heard() if row in told], told)
        self.desktop.key("Return")
        run.wait()

    def test_progress(self):
        heard = self.hear()
        bundle = self.package()
        gate = self.hold(bundle, "Data.dat")
        run = self.start(bundle)
        gate.wait_reached()
        title = run.texts["FILE_EXTRACT"]
        wait_until(lambda: ["window:activate", "dialog", title, 0] in heard(), 60)
        value = ["object:property-change:accessible-value", "progress bar", title]
        wait_until(lambda: [*value, 40.0] in heard(), 60)
        gate.open()
        wait_until(lambda: [*value, 100.0] in heard(), 60)
        run.wait()


class MappedTest(DriveTestCase):
    """No window comes only to go, and none changes its size when it is there."""

    def begin(self, **variables):
        """Forgets what was mapped until now."""
        self.log = self.log.with_name(self.log.name + "x") if hasattr(self, "log") else self.folder / "seen"
        self.listen("root_listener.py", self.log, **variables)

    def mapped(self):
        return re.findall(r"^mapped (\d+)$", self.log.read_text(), re.MULTILINE)

    def test_search_in_vain_shows_no_window_but_the_alert(self):
        # A window manager may not have seen a window that goes at once; so there is none.
        with x_server() as display:
            server = {"DISPLAY": display}
            run = self.start(self.package('<Disc FilePath="x"/>'), **server)
            seen = []
            while seen[-1:] != [1] and len(seen) < MOST_SEARCHES:
                wait_until(lambda: [window["role"] for window in run.windows()] == ["dialog"], 60)
                self.begin(**server)
                self.press_return(**server)
                wait_until(lambda: "alert" in [window["role"] for window in run.windows()], 60)
                seen.append(len(self.mapped()))
                self.press_return(**server)
            self.assertEqual(seen[-1], 1, seen)
            run.stop()

    def press_return(self, **variables):
        """For the window in the middle of the screen."""
        environment = {**self.desktop.environment, **variables}
        subprocess.run(["xdotool", "mousemove", "640", "410", "key", "Return"], env=environment, check=True)

    def test_window_of_a_search_is_mapped_once_and_keeps_its_size(self):
        run = self.start_search_of(3000, "en")
        self.begin()
        self.desktop.key("Return")
        window = run.window(run.texts["DISCCHECK_SERACHING"])
        self.assertNotEqual(items(window, "progress bar"), [])
        (frame,) = self.mapped()
        later = self.log.read_text().partition("mapped %s\n" % frame)[2]
        self.assertLessEqual(len(set(re.findall(r"^sized %s (\S+)$" % frame, later, re.MULTILINE))), 1)
        run.stop()


class CloseBoxTest(WindowTestCase):
    """Where the window manager heeds what a window says of itself, its frame has a close box that does something, or none."""

    manager = ["env", "ICEWM_PRIVCFG=/nonexistent", "icewm"]

    def frame_of(self, window):
        """The only window, and what its frame offers."""
        (number,) = wait_until(self.desktop.listed, 60)
        self.assertEqual(self.desktop.about(number)[0], window["name"])
        return wait_until(lambda: self.desktop.allowed(number), 60)

    def test_progress_window_has_none(self):
        bundle = self.package()
        gate = self.hold(bundle, "Data.dat")
        run = self.start(bundle)
        gate.wait_reached()
        window = run.window(run.texts["FILE_EXTRACT"])
        self.picture("progress-frame", "en")
        offered = self.frame_of(window)
        self.assertIn("MOVE", offered)
        self.assertNotIn("CLOSE", offered)
        gate.open()
        run.wait()

    def test_windows_that_can_be_closed_have_one(self):
        disc, alert = '<Disc FilePath="x"/>', '<UIMLog Signature="x"/>'
        for name, conditions in (("Disc.app", disc), ("Alert.app", alert)):
            with self.subTest(name):
                run = self.start(self.package(conditions, name=name))
                window = run.disc_window() if conditions == disc else run.alert()
                self.picture("frame-" + name, "en")
                self.assertLessEqual({"CLOSE", "MOVE"}, self.frame_of(window))
                self.desktop.click_close_box(window["name"])
                run.wait()


class ScaleTest(WindowTestCase):
    """Twice as large, by the desktop's setting and by the person's own."""

    def size_of_disc_window(self, picture, **variables):
        run = self.start(self.package('<Disc FilePath="x"/>', name="Scale.app"), **variables)
        run.disc_window()
        (window,) = self.desktop.listed()
        shown = self.desktop.run("xwininfo", "-id", window)
        left, top, width, height = (
            int(re.search(label + r": +(-?\d+)", shown)[1])
            for label in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        )
        self.assertGreaterEqual(min(left, top), 0)
        self.assertLessEqual(left + width, 1280)
        self.assertLessEqual(top + height, 800)
        self.picture("disc-" + picture, "en")
        self.desktop.key("Escape")
        run.wait()
        subprocess.run(["rm", "-rf", self.folder / "Scale.app"], check=True)
        return width, height

    def test_twice_as_large(self):
        width, height = self.size_of_disc_window("plain")
        self.desktop.run("xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER", "Xft.dpi:\t192\n")
        self.addCleanup(self.desktop.run, "xprop", "-root", "-remove", "RESOURCE_MANAGER")
        for picture, variables in (("dpi", {}), ("factor", {"QT_SCALE_FACTOR": "2", "QT_FONT_DPI": "96"})):
            with self.subTest(picture):
                large = self.size_of_disc_window(picture, **variables)
                # Less than twice where the screen ends, or lines are fewer in a wider window.
                self.assertGreater(large[0], 1.4 * width)
                self.assertGreater(large[1], 1.4 * height)


if __name__ == "__main__":
    unittest.main(verbosity=2)
