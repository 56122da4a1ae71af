# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The disc search on real windows: in vain, with a disc in a drive that there is not, and given up."""

import os
import unittest
from xml.sax.saxutils import quoteattr

from mocked_drive import DISK
from support import STAGING_NAME
from windows import GlobalMenu, items
from windows_case import LANGUAGES, PRODUCTS, WindowTestCase, shown_texts


class DiscSearchTest(WindowTestCase):
    """A disc could help, but none is found, or the person gives up."""

    def setUp(self):
        super().setUp()
        self.run_ = self.start(self.package('<UIMLog Signature="x"/><Disc FilePath="Setup/Product.dat"/>'))
        self.title = self.run_.texts["DISCCHECK_TITLE"]

    def end(self, *titles):
        self.run_.wait()
        self.assertEqual(self.run_.titles, [self.title, *titles])
        self.assertEqual(self.run_.staging[-1], False)
        self.assertEqual(self.records(), [])

    def search_in_vain(self, key):
        self.desktop.key(key)
        self.assert_alert(self.run_, self.run_.texts["UPDATE_INVALID_DISC"])

    def test_window(self):
        run = self.run_
        window = run.disc_window()
        self.assertEqual(shown_texts(window), [self.name, run.texts["DISCCHECK_MESSAGE"], "\n".join(PRODUCTS)])
        (products,) = items(window, "text")
        self.assertNotIn("editable", products["states"])
        search, cancel = items(window, "push button")
        self.assertEqual(search["name"], run.texts["DISCCHECK_START"])
        self.assertEqual(cancel["name"], run.texts["DISCCHECK_CANCEL"])
        self.assertLessEqual({"default", "focused", "enabled"}, set(search["states"]))
        self.assertNotIn("default", cancel["states"])
        x, y, width, height = window["bounds"]
        self.assertAlmostEqual(x + width / 2, 640, delta=20)
        self.assertAlmostEqual(y + height / 2, 400, delta=20)

        # The conditions are gone by now, the rest of the description is kept.
        self.assertEqual(os.listdir(self.temporary / STAGING_NAME / "Info"), ["Startup.xml"])
        self.desktop.key("Escape")
        self.end()

    def test_tab_order_and_cancel_by_its_button(self):
        run = self.run_
        window = run.disc_window()
        (products,) = items(window, "text")
        cancel = ("push button", run.texts["DISCCHECK_CANCEL"])
        self.assert_tab_order(
            run, self.title, ("push button", run.texts["DISCCHECK_START"]), cancel, ("text", products["name"])
        )
        self.desktop.key("Tab")
        run.wait_focus(self.title, cancel)
        self.desktop.key("Return")
        self.end()

    def test_cancel_by_the_close_box(self):
        self.run_.disc_window()
        self.desktop.click_close_box(self.title)
        self.end()

    def test_cancel_by_the_window_managers_key(self):
        self.run_.disc_window()
        self.desktop.key("alt+F4")
        self.end()

    def test_cancel_by_quit_of_the_menu(self):
        self.run_.disc_window()
        self.desktop.key("ctrl+q")
        self.end()

    def test_search_in_vain_leaves_the_window_for_another(self):
        run = self.run_
        run.disc_window()
        for search, answer in (("Return", "Return"), ("space", "Escape")):
            self.search_in_vain(search)
            # Only the alert takes keys and clicks, yet the window stays below it.
            self.assertIn(self.title, [window["name"] for window in run.windows()])
            self.desktop.key(answer)
            run.wait_focus(self.title, ("push button", run.texts["DISCCHECK_START"]))
            self.assertTrue((self.temporary / STAGING_NAME).exists())
        self.desktop.key("Escape")
        self.end(self.name, self.name)


class DriveTestCase(WindowTestCase):
    """A search with a made-up drive."""

    def start_search(self, *paths, language="en", **variables):
        self.mocked = self.drive()
        conditions = "".join("<Disc FilePath=%s/>" % quoteattr(path) for path in paths)
        bundle = self.package(conditions, name=language + ".app")
        run = self.start_in(language, bundle, drive=self.mocked, **variables)
        run.disc_window()
        return run

    def start_search_of(self, patterns, language, **variables):
        """A search that will take long, and finds the disc."""
        # Long runs of one letter make each comparison slow; the last path is the one that is there.
        deep = "/".join(["a" * 250] * 14)
        slow = ["*" + "a" * 245 + "/*" + "a" * (number % 100) + "b" for number in range(patterns)]
        run = self.start_search(*slow, "Setup/Product.dat", language=language, **variables)
        self.mocked.insert(["Setup/Product.dat", *("%s/%d" % (deep, number) for number in range(150))])
        return run

    def start_slow_search(self, patterns, language, **variables):
        run = self.start_search_of(patterns, language, **variables)
        self.desktop.key("Return")
        return run, run.window(run.texts["DISCCHECK_SERACHING"])


class FoundDiscTest(DriveTestCase):
    """A disc in a made-up drive."""

    def search_in_vain(self, run):
        self.desktop.key("Return")
        self.assert_alert(run, run.texts["UPDATE_INVALID_DISC"])
        self.desktop.key("Return")
        run.disc_window()

    def end(self, run, *titles):
        run.wait()
        self.assert_installed(run, run.texts["DISCCHECK_TITLE"], *titles)
        self.assertNotIn("Info/Condition.xml", self.record()["contents"])

    def test_disc_that_is_there(self):
        run = self.start_search("Other.dat", "Setup/Product.dat")
        self.mocked.insert(["Setup/Product.dat"])
        self.desktop.key("Return")
        self.end(run)

    def test_disc_that_comes_after_a_wrong_one(self):
        run = self.start_search("*/Product?.d*t")
        self.search_in_vain(run)
        self.mocked.insert(["Setup/Product.dat"])
        self.search_in_vain(run)
        self.mocked.eject()
        self.mocked.insert(["Setup/Product4.dat"])
        self.desktop.key("Return")
        self.end(run, self.name, self.name)

    def test_right_files_on_a_disk_that_is_no_disc(self):
        run = self.start_search("Setup/Product.dat")
        self.mocked.insert(["Setup/Product.dat"], DISK)
        self.search_in_vain(run)
        self.desktop.key("Escape")
        run.wait()
        self.assertEqual(self.records(), [])

    def test_search_that_takes_a_while(self):
        run, _ = self.start_slow_search(100, "en")
        self.end(run)

    def test_window_of_a_search(self):
        for language in LANGUAGES:
            with self.subTest(language):
                run, window = self.start_slow_search(3000, language)
                title = run.texts["DISCCHECK_SERACHING"]
                self.picture("searching", language)
                self.assert_progress_labels(window)
                self.assertEqual(items(window, "push button"), [])
                (bar,) = items(window, "progress bar")
                self.assertEqual(bar["name"], title)
                # Neither window goes away by what a person does meanwhile.
                self.desktop.key("Escape", "alt+F4")
                self.desktop.key("Return")
                names = [shown["name"] for shown in run.windows()]
                self.assertCountEqual(names, [title, run.texts["DISCCHECK_TITLE"]])
                run.stop()


class GlobalMenuTest(DriveTestCase):
    """The application menu in a bar that the desktop draws, which reaches every window at any time."""

    def setUp(self):
        super().setUp()
        self.bar = GlobalMenu(self.desktop)
        self.addCleanup(self.bar.close)

    def assert_cancelled(self, run):
        run.wait()
        self.assertEqual(run.titles, [run.texts["DISCCHECK_TITLE"]])
        self.assertEqual(run.staging, [False, True, False])
        self.assertEqual(self.records(), [])

    def test_quit_cancels(self):
        run = self.start_search("Setup/Product.dat", **GlobalMenu.variables)
        self.bar.choose(run.texts["QuitZephyrkit"])
        self.assert_cancelled(run)

    def test_quit_while_a_disc_is_searched_that_would_be_found_cancels(self):
        run, window = self.start_slow_search(300, "en", **GlobalMenu.variables)
        self.assertEqual(items(window, "menu bar"), [])
        self.bar.choose(run.texts["QuitZephyrkit"])
        self.assert_cancelled(run)


if __name__ == "__main__":
    unittest.main(verbosity=2)
