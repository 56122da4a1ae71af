# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Every way that a run can go without a disc, on real windows: what is shown, how it is answered, what is left."""

import gzip
import os
import plistlib
import re
import shutil
import subprocess
import unittest

from support import STAGING_NAME, odc_archive, wait_until, write
from windows import Gate, items, walk
from windows_case import LANGUAGES, PRODUCTS, SIGNATURE, WindowTestCase, shown_texts, string_table


# Around the lines of a list, in pixels.
FRAME = 3


class SecondLauncherTest(WindowTestCase):
    """A launcher that finds another one at work ends before it shows or makes anything."""

    def second_folder(self):
        folder = self.folder / "tmp2"
        folder.mkdir(mode=0o700, exist_ok=True)
        return str(folder)

    def program(self, path):
        """Something that runs from that path, and does nothing."""
        path.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2("/bin/sleep", path)
        process = subprocess.Popen([path, "600"])
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)

    def application(self, folder, name, strings=None):
        """Another application that runs, and does nothing."""
        contents = self.folder / folder / "Contents"
        write(contents / "Info.plist", plistlib.dumps({"CFBundleName": name, "CFBundleExecutable": "Other"}))
        if strings is not None:
            write(contents / "Resources/InfoPlist.strings", '"CFBundleName" = "%s";' % strings)
        self.program(contents / "Linux/Other")

    def assert_second_is_unseen(self, bundle, **variables):
        second = self.start(bundle, TMPDIR=self.second_folder(), **variables)
        second.wait()
        second.assert_unseen()

    def assert_runs_all_the_same(self, bundle):
        run = self.start(bundle)
        run.wait()
        self.assert_installed(run)

    def test_same_launcher_twice(self):
        bundle = self.package()
        gate = self.hold(bundle, "Data.dat")
        first = self.start(bundle)
        gate.wait_reached()
        first.window(first.texts["FILE_EXTRACT"])
        self.assert_second_is_unseen(bundle)
        self.assertEqual(self.records(), [])
        gate.open()
        first.wait()
        self.assert_installed(first)

    def test_waiting_alert_counts_as_running(self):
        bundle = self.package("")
        first = self.start(bundle)
        first.alert()
        second = self.start(bundle, TMPDIR=self.second_folder())
        second.wait()
        self.assertEqual(second.staging, [False])
        self.assertEqual(len(first.windows()), 1)
        self.desktop.key("Return")
        first.wait()
        self.assertEqual(first.titles, [self.name])

    def test_two_at_once_never_install_both(self):
        bundle = self.package()
        runs = [self.start(bundle), self.start(bundle, TMPDIR=self.second_folder())]
        for run in runs:
            run.wait()
        self.assertLessEqual(len(self.records()), 1)

    def test_other_application_of_the_same_name(self):
        bundle = self.package()
        self.application("Elsewhere.app", self.name)
        self.assert_second_is_unseen(bundle)

    def test_name_of_the_strings_file_counts_before_the_one_of_the_property_list(self):
        bundle = self.package()
        self.application("Elsewhere.app", "Something else", strings=self.name)
        self.assert_second_is_unseen(bundle)

    def test_bundle_folder_counts_where_no_name_is_given(self):
        bundle = self.package()
        contents = self.folder / (self.name + ".app") / "Contents"
        write(contents / "Info.plist", plistlib.dumps({"CFBundleExecutable": "Other"}))
        self.program(contents / "Linux/Other")
        self.assert_second_is_unseen(bundle)

    def test_similar_things_do_not_count(self):
        self.application("Other.app", self.name + "2")
        self.application("Case.app", self.name.upper())
        self.application("Strings.app", self.name, strings="Another name")
        # The same name or the same program, but in no bundle; a helper of a bundle.
        self.program(self.folder / self.name)
        self.program(self.folder / "Zephyrkit")
        self.program(self.folder / "Case.app/Contents/Helpers" / self.name)
        self.assert_runs_all_the_same(self.package())

    def test_name_with_letters_of_many_scripts(self):
        name = "Prüfung-日本語-%d" % os.getpid()
        self.describe_package(name)
        self.name = name
        bundle = self.package()
        # The same letters to the eye, but not the same bytes.
        self.application("Decomposed.app", name.replace("ü", "u\u0308"))
        self.assert_runs_all_the_same(bundle)
        self.application("Same.app", name)
        self.assert_second_is_unseen(bundle)

    def test_identifier_without_a_dot_gives_no_name_to_compare(self):
        bundle = self.package()
        path = bundle / "Contents/Info.plist"
        information = plistlib.loads(path.read_bytes())
        information["CFBundleIdentifier"] = self.name
        path.write_bytes(plistlib.dumps(information))
        gate = self.hold(bundle, "Info.dat")
        first = self.start(bundle)
        gate.wait_reached()
        other = self.pack("Second.app")
        (other / "Contents/Info.plist").write_bytes(plistlib.dumps(information))
        second = self.start(other, TMPDIR=self.second_folder())
        second.wait()
        gate.open()
        first.wait()
        self.assertEqual(len(self.records()), 2)

    def test_identifier_without_a_dot_beside_a_strings_file(self):
        bundle = self.package()
        path = bundle / "Contents/Info.plist"
        information = plistlib.loads(path.read_bytes())
        information["CFBundleIdentifier"] = self.name
        path.write_bytes(plistlib.dumps(information))
        write(bundle / "Contents/Resources/InfoPlist.strings", '"CFBundleName" = "%s";' % self.name)
        self.application("Elsewhere.app", self.name)
        self.assert_second_is_unseen(bundle)


class StagingAlertTest(WindowTestCase):
    """The staging folder cannot be made."""

    def shared_folder(self):
        """A folder where somebody put a link in the place of the person's own."""
        shared = self.folder / "shared"
        shared.mkdir()
        shared.chmod(0o1777)
        link = shared / f"com.varno.zephyrkit-{os.geteuid()}"
        link.symlink_to(self.temporary)
        return shared

    def start_without_folder(self):
        bundle = self.package()
        run = self.start(bundle, TMPDIR=str(self.shared_folder()), XDG_CACHE_HOME="/dev/null")
        return run, self.assert_alert(run, run.texts["TEMPFOLDERCREATEFAILURE"])

    def end(self, run):
        self.assertEqual(run.process.wait(timeout=60), 0)
        run.stop()
        self.assertEqual(run.titles, [self.name])
        self.assertEqual(run.staging, [False])
        self.assertEqual(self.records(), [])
        self.assertEqual(os.listdir(self.temporary), [])

    def test_enter_answers(self):
        run, _ = self.start_without_folder()
        self.desktop.key("Return")
        self.end(run)

    def test_escape_answers(self):
        run, _ = self.start_without_folder()
        self.desktop.key("Escape")
        self.end(run)

    def test_close_box_answers(self):
        run, _ = self.start_without_folder()
        self.desktop.click_close_box(self.name)
        self.end(run)

    def test_tab_stays_on_the_only_button(self):
        run, _ = self.start_without_folder()
        self.assert_tab_order(run, self.name, ("push button", run.texts["OK"]))
        self.desktop.key("space")
        self.end(run)

    def test_disk_that_takes_nothing(self):
        if os.geteuid() != 0:
            self.skipTest("mounting a file system takes root")
        bundle = self.package()
        sealed = self.folder / "sealed"
        sealed.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", "ro,mode=700", "none", sealed], check=True)
        self.addCleanup(subprocess.run, ["umount", sealed], check=True)
        run = self.start(bundle, TMPDIR=str(sealed))
        self.assert_alert(run, run.texts["TEMPFOLDERCREATEFAILURE"])
        self.desktop.key("Return")
        self.end(run)


class ConditionsMetTest(WindowTestCase):
    """The package applies: its payload is unpacked under the progress window, then its program runs."""

    def setUp(self):
        super().setUp()
        self.library = self.folder / "share"
        self.list = self.library / "Preferences/com.varno.ic_installer.plist"

    def assert_installs(self, bundle):
        run = self.start(bundle, XDG_DATA_DIRS="%s:/usr/share" % self.library)
        run.wait()
        self.assert_installed(run)

    def test_signature_in_each_form_of_the_list(self):
        bundle = self.package('<UIMLog Signature="Other"/><UIMLog Signature="%s"/>' % SIGNATURE)
        installed = {"Varno Utilities": ["First", SIGNATURE]}
        for form, contents in (
            ("XML", plistlib.dumps(installed, fmt=plistlib.FMT_XML)),
            ("binary", plistlib.dumps(installed, fmt=plistlib.FMT_BINARY)),
            ("text", '{ "Varno Utilities" = ( First, "%s" ); }' % SIGNATURE),
        ):
            with self.subTest(form):
                self.record_path.unlink(missing_ok=True)
                write(self.list, contents)
                self.assert_installs(bundle)

    def test_uninstall_description(self):
        write(self.library / "Application Support/Varno_Inc_IC/Tandemset/Uninstall/Example.xml", "")
        self.assert_installs(self.package('<UIMLog Signature="x"/><UninstallXml AppName="Example.xml"/>'))

    def test_installed_product_comes_before_the_disc(self):
        write(self.list, plistlib.dumps({"Varno Utilities": [SIGNATURE]}))
        self.assert_installs(self.package('<Disc FilePath="x"/><UIMLog Signature="%s"/>' % SIGNATURE))

    def test_package_without_conditions(self):
        self.assert_installs(self.package())

    def test_progress_window(self):
        bundle = self.package()
        gate = self.hold(bundle, "Data.dat")
        run = self.start(bundle)
        gate.wait_reached()
        title = run.texts["FILE_EXTRACT"]
        window = run.window(title)
        self.assert_progress_labels(window)
        self.assertEqual(window["role"], "dialog")
        self.assertEqual(items(window, "push button"), [])
        (bar,) = items(window, "progress bar")
        self.assertEqual((bar["name"], bar["value"]), (title, 40.0))
        x, y, width, height = window["bounds"]
        self.assertAlmostEqual(x + width / 2, 640, delta=20)
        self.assertAlmostEqual(y + height / 2, 400, delta=20)

        # Nothing that a person does takes it away.
        self.desktop.key("Escape")
        self.desktop.key("alt+F4")
        self.desktop.key("Return")
        self.assertEqual(run.window(title)["name"], title)
        self.assertEqual(self.records(), [])
        gate.open()
        run.wait()
        self.assert_installed(run)

    def test_no_window_stays_while_the_setup_program_runs(self):
        gate = Gate(self.folder / "setup-gate")
        self.startup()
        write(self.source / "Data/setup", "#!/bin/sh\nread -r line < '%s'\nexit 3\n" % gate.path, 0o755)
        run = self.start(self.pack())
        gate.wait_reached()
        # The window manager may hear of the end of the last one after the program has begun.
        wait_until(lambda: self.desktop.listed() == [], 60)
        self.assertTrue((self.temporary / STAGING_NAME / "Data/setup").exists())
        gate.open()
        run.wait()
        self.assertEqual(run.staging, [False, True, False])

    def test_payload_without_program_ends_in_silence(self):
        write(self.source / "Data/readme", "no program")
        run = self.start(self.pack())
        run.wait()
        self.assertEqual(run.titles, [run.texts["FILE_EXTRACT"]])
        self.assertEqual(run.staging, [False, True, False])


class SoftwareListTest(WindowTestCase):
    """The package does not apply, and no disc can help: the products are named."""

    def start_refused(self, conditions='<UIMLog Signature="x"/>', products=PRODUCTS):
        return self.start(self.package(conditions, products))

    @staticmethod
    def message(run, products):
        return run.texts["UPDATE_FAILURE"].replace("%s", "\n".join("  " + product for product in products))

    def end(self, run, key="Return"):
        self.desktop.key(key)
        run.wait()
        self.assertEqual(run.titles, [self.name])
        self.assertEqual(self.records(), [])

    def test_names_the_products_after_the_staging_folder_is_gone(self):
        bundle = self.package('<UIMLog Signature="x"/>')
        gate = self.hold(bundle, "Info.dat")
        run = self.start(bundle)
        gate.wait_reached()
        wait_until(lambda: True in run.seen_staging(), 60)
        gate.open()
        self.assert_alert(run, self.message(run, PRODUCTS))
        self.assertFalse((self.temporary / STAGING_NAME).exists())
        self.end(run)
        self.assertEqual(run.staging, [False, True, False])

    def test_escape_and_close_box_answer_too(self):
        run = self.start_refused()
        self.assert_alert(run, self.message(run, PRODUCTS))
        self.end(run, "Escape")
        run = self.start(self.folder / "TestSetup.app")
        self.assert_alert(run, self.message(run, PRODUCTS))
        self.desktop.click_close_box(self.name)
        run.wait()

    def test_other_conditions_that_never_apply(self):
        for conditions in ("", '<Registry KeyName="x"/>'):
            with self.subTest(conditions):
                run = self.start(self.package(conditions, name="C%d.app" % len(conditions)))
                self.assert_alert(run, self.message(run, PRODUCTS))
                self.end(run)

    def test_empty_list(self):
        run = self.start_refused(products=[])
        self.assert_alert(run, self.message(run, []))
        self.end(run)

    def test_list_longer_than_the_screen(self):
        products = ["Product %d" % number for number in range(3000)]
        run = self.start_refused(products=products)
        window = self.assert_alert(run, self.message(run, products))
        self.assert_inside_screen(window)
        self.assert_inside_screen(items(window, "push button")[0])

        self.assert_tab_order(run, self.name, ("push button", run.texts["OK"]), ("text", items(window, "label")[0]["name"]))
        (view,) = items(window, "text")
        before = self.desktop.pixels(*view["bounds"])
        self.desktop.key("Tab", "Next")
        wait_until(lambda: self.desktop.pixels(*view["bounds"]) != before, 60)
        self.end(run)

    def test_name_wider_than_the_screen(self):
        products = ["wide " * 2000, "w" * 5000]
        run = self.start_refused(products=products)
        window = self.assert_alert(run, self.message(run, products))
        self.assert_inside_screen(window)
        self.assert_inside_screen(items(window, "push button")[0])
        self.end(run)

    def test_malformed_conditions_give_an_empty_list(self):
        bundle = self.package()
        for condition in (b"<UpdateInfo><Conditions>", b"\0\xff", b""):
            with self.subTest(condition):
                members = [("Info", 0o40755, b""), ("Info/Condition.xml", 0o100644, condition)]
                (bundle / "Contents/Resources/Info.datx").write_bytes(gzip.compress(odc_archive(members)))
                run = self.start(bundle)
                self.assert_alert(run, self.message(run, []))
                self.end(run)

    def test_unusable_installed_software_lists_count_as_none(self):
        bundle = self.package('<UIMLog Signature="%s"/>' % SIGNATURE)
        library = self.folder / "share"
        path = library / "Preferences/com.varno.ic_installer.plist"
        for number, contents in enumerate(
            (
                b"<plist><dict><key>Varno Utilities</key><array>",
                plistlib.dumps({"Varno Utilities": SIGNATURE}),
                plistlib.dumps({"Varno Utilities": [SIGNATURE.lower()]}, fmt=plistlib.FMT_BINARY),
                os.urandom(4000),
            )
        ):
            with self.subTest(number):
                write(path, contents)
                run = self.start(bundle, XDG_DATA_DIRS=str(library))
                self.assert_alert(run, self.message(run, PRODUCTS))
                self.end(run)

    def test_format_with_other_marks(self):
        for text, expected in (
            ("100%% of %d %n %s, not %s %", "100% of %d %n   One, not %s %"),
            ("no place for the list", "no place for the list"),
        ):
            with self.subTest(text):
                bundle = self.package("", ["One"], name="F%d.app" % len(text))
                table = bundle / "Contents/Resources/UILang/en/ZPKStringTable.def"
                line = '"ZPKString_UPDATE_FAILURE" = "%s";' % text
                table.write_text(re.sub('^"ZPKString_UPDATE_FAILURE".*$', line, table.read_text(), flags=re.MULTILINE))
                run = self.start(bundle)
                self.assert_alert(run, expected)
                self.end(run)


class LanguageTest(WindowTestCase):
    """The same windows in the person's language, and from right to left where it is written so."""

    def assert_begins_at(self, language, first, second):
        """The first of the two comes first for a reader of the language."""
        left, right = (second, first) if language == "ar" else (first, second)
        self.assertLess(left["bounds"][0], right["bounds"][0])

    def test_software_list(self):
        bundle = self.package("")
        for language in LANGUAGES:
            with self.subTest(language):
                run = self.start_in(language, bundle)
                message = SoftwareListTest.message(run, PRODUCTS)
                window = self.assert_alert(run, message)
                self.picture("software-list", language)
                (icon,) = [item for item in walk(window) if item["role"] == "image"]
                self.assert_begins_at(language, icon, items(window, "label")[0])
                self.desktop.key("Return")
                run.wait()

    def test_every_product_stands_at_the_readers_side(self):
        bundle = self.package("", ["i"] * 12)
        for language in LANGUAGES:
            with self.subTest(language):
                run = self.start_in(language, bundle)
                (view,) = items(run.alert(), "text")
                x, y, width, height = view["bounds"]
                # Inside of the frame there is nothing but the list.
                size = (width // 2 - FRAME, height // 4)
                middle = y + height * 3 // 8
                left, right = (x + FRAME, middle, *size), (x + width // 2, middle, *size)
                empty, written = (left, right) if language == "ar" else (right, left)
                wait_until(lambda: self.desktop.colours(*written) > 1, 60)
                self.assertEqual(self.desktop.colours(*empty), 1)
                self.desktop.key("Return")
                run.wait()

    def test_disc_window(self):
        bundle = self.package('<Disc FilePath="x"/>')
        for language in LANGUAGES:
            with self.subTest(language):
                run = self.start_in(language, bundle)
                texts = run.texts
                window = run.disc_window()
                self.picture("disc", language)
                self.assertEqual(shown_texts(window), [self.name, texts["DISCCHECK_MESSAGE"], "\n".join(PRODUCTS)])
                search, cancel = items(window, "push button")
                self.assertEqual(search["name"], texts["DISCCHECK_START"])
                self.assertEqual(cancel["name"], texts["DISCCHECK_CANCEL"])
                self.assert_begins_at(language, search, cancel)
                self.assert_menu(window, texts)
                self.desktop.key("Return")
                self.assert_alert(run, texts["UPDATE_INVALID_DISC"])
                self.picture("invalid-disc", language)
                self.desktop.key("Return")
                run.disc_window()
                self.desktop.key("Escape")
                run.wait()
                self.assertEqual(run.titles, [texts["DISCCHECK_TITLE"], self.name])

    def assert_menu(self, window, texts):
        (bar,) = items(window, "menu bar")
        names = [item["name"] for item in walk(bar) if item["role"] == "menu item"]
        keys = ("AboutZephyrkit", "HideZephyrkit", "QuitZephyrkit")
        self.assertEqual(names, [self.name, *(texts[key] for key in keys)])

    def test_about_window(self):
        bundle = self.package('<Disc FilePath="x"/>')
        for language in LANGUAGES:
            with self.subTest(language):
                run = self.start_in(language, bundle)
                (bar,) = items(run.disc_window(), "menu bar")
                self.desktop.click(bar["children"][0])
                about = run.texts["AboutZephyrkit"]
                wait_until(lambda: self.showing(run, about), 60)
                # It is the first item of the menu.
                self.desktop.key("Down", "Return")
                window = run.window(about)
                self.picture("about", language)
                name, version = shown_texts(window)
                self.assertEqual(name, self.name)
                self.assertRegex(version, r"^Zephyrkit \d+\.\d+\.\d+$")
                self.assertEqual(items(window, "push button"), [])
                self.desktop.key("Return")
                run.disc_window()
                self.desktop.key("Escape")
                run.wait()

    def showing(self, run, name):
        return [item for window in run.windows() for item in items(window, "menu item") if item["name"] == name]

    def test_progress_window(self):
        for language in LANGUAGES:
            with self.subTest(language):
                bundle = self.package(name=language + ".app")
                gate = self.hold(bundle, "Data.dat")
                run = self.start_in(language, bundle)
                gate.wait_reached()
                title = run.texts["FILE_EXTRACT"]
                window = run.window(title)
                self.picture("progress", language)
                self.assert_progress_labels(window)
                gate.open()
                run.wait()
                self.assertEqual(run.titles, [title])

    def test_unknown_language_falls_back(self):
        run = self.start(self.package(""), LC_ALL="xx_YY.UTF-8")
        self.assert_alert(run, SoftwareListTest.message(run, PRODUCTS))
        self.desktop.key("Return")
        run.wait()


class OddPathTest(WindowTestCase):
    """A bundle where no path is text: no character, and what a terminal would obey."""

    def odd_package(self, conditions=None):
        folder = self.folder / os.fsdecode(b"caf\xe9 \x1b[2J")
        folder.mkdir()
        return self.package(conditions).rename(folder / "TestSetup.app")

    def test_with_windows(self):
        run = self.start(self.odd_package())
        run.wait()
        self.assert_installed(run)

    def test_names_that_a_loader_reads_in_its_own_way(self):
        bundle = self.package()
        for name in ("$LIB", "$ORIGIN", "${PLATFORM} $", "a:b;c,d", "two\nlines ", "%s -x"):
            with self.subTest(name):
                self.record_path.unlink(missing_ok=True)
                bundle = bundle.rename(self.folder / (name + ".app"))
                run = self.start(bundle)
                run.wait()
                self.assert_installed(run)

    def test_with_the_disc_window(self):
        run = self.start(self.odd_package('<Disc FilePath="x"/>'))
        run.disc_window()
        self.desktop.key("Escape")
        run.wait()
        self.assertEqual(run.titles, [run.texts["DISCCHECK_TITLE"]])

    def test_on_the_terminal(self):
        bundle = self.odd_package()
        done = self.launch(bundle)
        self.record()
        title = string_table(bundle, "en")["FILE_EXTRACT"]
        progress = "".join("%d%%  %s\n" % (percent, title) for percent in (10, 40, 100))
        self.assertEqual(done.stdout, progress + "recorder: ran\n")


if __name__ == "__main__":
    unittest.main(verbosity=2)
