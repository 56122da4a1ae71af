# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Sources that the packager makes, of nothing or of a package, and that they give the same package again."""

import os
import shutil
import signal
import subprocess
import tempfile
import unittest

from packager_case import CommandTestCase, with_processors
from support import BUILD, wait_until, write

OTHER_DISK = "/dev/shm"


class NewTest(CommandTestCase):
    def test_what_is_made_builds_and_runs_as_it_is(self):
        done = self.run_zpkpack("new", "HelloSetup")
        self.assertEqual(done.stdout, b"HelloSetup\n")
        self.run_zpkpack("build", "HelloSetup", "-o", "Out.app")
        done = self.launch(self.folder / "Out.app")
        self.assertIn("Hello!", done.stdout)

    def test_whatever_its_name_it_has_no_finding_and_runs(self):
        for number, (folder, arguments) in enumerate(
            [
                ("Plain", []),
                ("-dash", []),
                ("Hällo 你好 \U0001f680", []),
                ("'single' \"double\" $HOME `id` \\", []),
                ("named", ["--name=-x -y", "--identifier=com.example.-x -y"]),
                ("named", ["--identifier", "org.example.Ünï"]),
            ]
        ):
            with self.subTest(folder=folder, arguments=arguments):
                place = self.folder / str(number)
                place.mkdir()
                self.run_zpkpack("new", *arguments, "--", f"{number}/{folder}")
                self.assertEqual(self.run_zpkpack("check", "--strict", place / folder).stdout, b"")
                self.run_zpkpack("build", place / folder, "-o", place / "Out.app", "--without-windows")
                self.assertIn("Hello!", self.launch(place / "Out.app").stdout)

    def test_a_name_that_is_taken_for_an_option_is_told(self):
        done = self.run_zpkpack("new", "-dash", status=2)
        self.assertIn(b"-dash", done.stderr)
        self.assertIn(b"slash", self.run_zpkpack("new", "Made", "--name", "a/b", status=1).stderr)

    def test_every_file_is_explained(self):
        self.run_zpkpack("new", "HelloSetup")
        for path, comment in (
            ("Package.strings", "/* "),
            ("Info/Startup.xml", "<!-- "),
            ("Data/setup", "\n# "),
            ("Data/Greeting.txt", "Whatever you put there"),
        ):
            self.assertIn(comment, (self.folder / "HelloSetup" / path).read_text(), path)

    def test_names_are_taken_from_what_was_told(self):
        for number, (arguments, name, identifier) in enumerate(
            [
                ([], "Folder", "com.example.Folder"),
                (["--name", "Other"], "Other", "com.example.Other"),
                (["--identifier", "org.example.Third"], "Third", "org.example.Third"),
                (["--name", 'Q"\\ü', "--identifier", 'org.Q"\\ü'], 'Q"\\ü', 'org.Q"\\ü'),
            ]
        ):
            with self.subTest(arguments):
                source = self.folder / str(number) / "Folder"
                source.parent.mkdir()
                self.run_zpkpack("new", source, *arguments)
                self.run_zpkpack("build", source, "-o", f"{number}.app", "--template", self.template)
                plist = (self.folder / f"{number}.app/Contents/Info.plist").read_text()
                for text in (name, identifier):
                    self.assertIn(f"<string>{text}</string>", plist.replace("&quot;", '"'))

    def test_names_that_do_not_fit_leave_nothing(self):
        for arguments in (
            ["--name", "A", "--identifier", "com.example.B"],
            ["--name", "a/b"],
            ["--name", "a\nb"],
            ["--name", b"\xff"],
            ["--name", "a.b"],
        ):
            with self.subTest(arguments):
                self.assertNotEqual(self.run_zpkpack("new", "Made", *arguments, status=1).stderr, b"")
                self.assertFalse((self.folder / "Made").exists())

    def test_nothing_that_is_there_is_touched(self):
        (self.folder / "Made").mkdir()
        write(self.folder / "File", "mine")
        os.symlink("nowhere", self.folder / "Link")
        before = self.tree(self.folder)
        for name in ("Made", "File", "Link", "Made/"):
            self.assertIn(b" exists\n", self.run_zpkpack("new", name, status=1).stderr)
        self.run_zpkpack("new", "no/such/Folder", status=1)
        self.assertEqual(self.tree(self.folder), before)


class ExtractTest(CommandTestCase):
    def make_rich_source(self):
        write(self.source / "Data/noise", os.urandom(300_000), 0o640)
        write(self.source / "Data/._looks like attributes", b"but is none")
        write(self.source / "Data/inner/odd\\name\n", "odd", 0o400)
        os.symlink("../../outside", self.source / "Data/inner/way out")
        os.link(self.source / "Data/noise", self.source / "Data/second name")
        write(self.source / "UILang/Languages.xml", '<a FallBackCode="en_US"><Language Code="en_US"/></a>')
        write(self.source / "UILang/en_US/Own.txt", "own", 0o600)
        write(self.source / "UILang/ZPKStringTable.def", "")
        (self.source / "UILang/en_US").chmod(0o750)
        (self.source / "Data/inner").chmod(0o555)
        self.addCleanup(self.open_all)

    def open_all(self):
        for folder in self.folder.rglob("inner"):
            folder.chmod(0o755)

    def test_what_is_extracted_builds_to_the_same_bytes(self):
        self.make_rich_source()
        for name in ("Out.app", "Out.run"):
            for again in ("Out.app", "Out.run"):
                with self.subTest(name=name, again=again):
                    package = self.small_package(name)
                    self.run_zpkpack("extract", package, "-o", "Again")
                    (self.folder / "second").mkdir()
                    self.run_zpkpack("build", "Again", "-o", f"second/{again}", "--template", self.template)
                    if name != again:
                        package = self.small_package(again)
                    second = self.folder / "second" / again
                    if again == "Out.run":
                        self.assertEqual(self.sum_of(second), self.sum_of(package))
                    else:
                        self.assertEqual(self.tree(second), self.tree(package))
                    self.open_all()
                    for left in ("Again", "second", "Out.app"):
                        shutil.rmtree(self.folder / left, ignore_errors=True)
                    (self.folder / "Out.run").unlink(missing_ok=True)
                    (self.source / "Data/inner").chmod(0o555)

    def test_nothing_is_written_outside(self):
        rows = [
            ("climbing", [("Data", 0o040755, b""), ("../climbed", 0o100644, b"x")]),
            ("absolute", [("Data", 0o040755, b""), (str(self.folder / "climbed"), 0o100644, b"x")]),
            (
                "through a link",
                [("Data", 0o040755, b""), ("Data/out", 0o120777, b"../../.."), ("Data/out/climbed", 0o100644, b"x")],
            ),
            ("beside", [("Data", 0o040755, b""), ("Package.strings", 0o100644, b"x")]),
            ("a link instead", [("Data", 0o120777, b"/etc")]),
            ("a device", [("Data", 0o040755, b""), ("Data/null", 0o020666, b"")]),
            ("nothing", []),
        ]
        for number, (name, members) in enumerate(rows):
            with self.subTest(name):
                bundle = self.hostile_bundle(members, f"Hostile{number}.app")
                shutil.copy(self.template / "Contents/Info.plist", bundle / "Contents")
                before = self.tree(self.folder)
                self.assertIn(b"Data.datx", self.run_zpkpack("extract", bundle, "-o", "Made", status=1).stderr)
                self.assertEqual(self.tree(self.folder), before)

    def test_a_damaged_package_leaves_nothing(self):
        bundle = self.small_package("Out.app")
        for name, spoil in (
            ("Info.plist", lambda path: path.write_text("<plist/>")),
            ("Info.plist", lambda path: path.unlink()),
            ("Resources/Info.datx", lambda path: path.unlink()),
            ("Resources/Data.datx", lambda path: os.truncate(path, path.stat().st_size // 2)),
        ):
            with self.subTest(name):
                spoiled = self.folder / "Spoiled.app"
                shutil.copytree(bundle, spoiled)
                spoil(spoiled / "Contents" / name)
                done = self.run_zpkpack("extract", spoiled, "-o", "Made", status=1)
                # What is wrong, once and with where it is.
                self.assertRegex(done.stderr.decode(), rf"\Azpkpack: error: \S*/Spoiled\.app/Contents/{name}: [^:]*\n\Z")
                self.assertFalse((self.folder / "Made").exists())
                shutil.rmtree(spoiled)

    def test_nothing_that_is_there_is_touched(self):
        bundle = self.small_package("Out.app")
        (self.folder / "Made").mkdir()
        self.assertIn(b"Made exists\n", self.run_zpkpack("extract", bundle, "-o", "Made", status=1).stderr)
        self.assertEqual(os.listdir(self.folder / "Made"), [])

    def test_a_signal_leaves_nothing(self):
        write(self.source / "Data/large", "")
        os.truncate(self.source / "Data/large", 4 << 30)
        bundle = self.small_package("Out.app")
        before = sorted(self.folder.rglob("*"))
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number):
                process = subprocess.Popen(
                    [BUILD / "zpkpack", "extract", bundle, "-o", "Made"],
                    cwd=self.folder,
                    stdout=subprocess.DEVNULL,
                    stderr=subprocess.DEVNULL,
                )
                wait_until(lambda: list(self.folder.glob(".zpk-*/Data.dat/Data")), 30)
                process.send_signal(number)
                self.assertEqual(process.wait(30), -number)
                self.assertEqual(sorted(self.folder.rglob("*")), before)


class ReproducibleTest(CommandTestCase):
    """The same source gives the same bytes, whoever builds it, where and when."""

    def copy_source(self, to, backwards):
        """A copy of the source whose files were made in another order."""
        for path in sorted(self.source.rglob("*"), reverse=backwards):
            place = to / path.relative_to(self.source)
            if path.is_dir():
                place.mkdir(parents=True, exist_ok=True)
            else:
                place.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy2(path, place, follow_symlinks=False)
        for path in [self.source, *self.source.rglob("*")]:
            place = to / path.relative_to(self.source)
            if not path.is_symlink():
                shutil.copystat(path, place)

    @unittest.skipUnless(
        os.access(OTHER_DISK, os.W_OK) and os.stat(OTHER_DISK).st_dev != os.stat(tempfile.gettempdir()).st_dev,
        "there is no second file system to build on",
    )
    def test_neither_machine_nor_person_shows_in_the_package(self):
        for number in range(60):
            write(self.source / f"Data/{number * 7919 % 60:02}-ä", os.urandom(number * 1000))
        write(self.source / "Data/large", os.urandom(5_000_000))
        os.link(self.source / "Data/large", self.folder / "other name")
        write(self.source / "UILang/Languages.xml", '<a FallBackCode="en_US"><Language Code="en_US"/></a>')
        other = tempfile.mkdtemp(prefix="zpk-e2e-", dir=OTHER_DISK)
        self.addCleanup(shutil.rmtree, other)
        places = [(self.folder / "here", 0o022, {}), (self.folder.__class__(other), 0o077, {})]
        places[1][2].update(LC_ALL="C", TZ="Pacific/Auckland", USER="somebody")
        places[0][2].update(LC_ALL="de_DE.UTF-8", TZ="America/New_York")
        made = []
        for number, (place, mask, environment) in enumerate(places):
            self.copy_source(place / "Source", backwards=number == 1)
            for name in ("Out.app", "Out.run"):
                subprocess.run(
                    [BUILD / "zpkpack", "build", "Source", "-o", name, "--template", self.template],
                    cwd=place,
                    env={**os.environ, **environment},
                    umask=mask,
                    check=True,
                    capture_output=True,
                )
            made.append((self.tree(place / "Out.app"), self.sum_of(place / "Out.run")))
        self.assertEqual(made[0], made[1])

    def test_the_number_of_processors_does_not_show(self):
        write(self.source / "Data/dense", os.urandom(3_000_000))
        write(self.source / "Data/loose", b"".join(b"%d lines\n" % number for number in range(500_000)))
        for number in range(3):
            write(self.template / f"Contents/Resources/{number}", b"%d" % number * 4_000_000)
        made = []
        for count in (1, 3, 64):
            for name in ("Out.app", "Out.run"):
                subprocess.run(
                    [*with_processors(count, self.folder), BUILD / "zpkpack", "build", "source", "-o", name, "--force"]
                    + ["--template", self.template],
                    cwd=self.folder, check=True, capture_output=True)
            made.append((self.tree(self.folder / "Out.app"), self.sum_of(self.folder / "Out.run")))
        self.assertEqual(made, [made[0]] * 3)

    def test_names_outside_the_source_leave_no_trace(self):
        write(self.source / "Data/lonely", os.urandom(2000))
        write(self.source / "Data/one", os.urandom(2000))
        os.link(self.source / "Data/one", self.source / "Data/two")
        # Folders get another time with a new name in them, files do not.
        made = []
        for name in ("Out.app", "Out.run"):
            made.append(self.sum_of_package(name))
        for name in ("lonely", "one"):
            os.link(self.source / "Data" / name, self.folder / f"outside {name}")
        self.assertEqual((self.source / "Data/one").stat().st_nlink, 3)
        self.assertEqual([self.sum_of_package(name) for name in ("Out.app", "Out.run")], made)
        listed = self.run_zpkpack("list", "--long", "Out.app").stdout.decode()
        self.assertEqual(listed.count(" = Data/one\n"), 1)

    def sum_of_package(self, name):
        package = self.small_package(name, "--force")
        return self.tree(package) if package.is_dir() else self.sum_of(package)

    def test_the_epoch_of_the_source_counts_instead_of_its_times(self):
        write(self.source / "Data/file", "contents")
        os.symlink("file", self.source / "Data/way")
        packages = []
        for number in (1, 2):
            for path in [*self.source.rglob("*"), self.source / "Data"]:
                os.utime(path, (number * 10**9, number * 10**9), follow_symlinks=False)
            self.run_zpkpack(
                *["build", self.source, "-o", f"{number}.run", "--template", self.template],
                env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"},
            )
            packages.append((self.folder / f"{number}.run"))
        times = self.run_zpkpack("list", "--long", packages[0]).stdout.decode()
        self.assertEqual(times.count("2023-11-14 22:13:20"), times.count("\n"))
        for package, again in zip(packages, ("1.app", "2.app")):
            self.run_zpkpack("extract", package, "-o", f"{again}.source")
        self.assertEqual(self.tree(self.folder / "1.app.source"), self.tree(self.folder / "2.app.source"))

    def test_an_epoch_that_is_no_number_is_refused(self):
        for epoch in ("yesterday", "-1", "1e9", "99999999999999999999", "12 "):
            with self.subTest(epoch):
                environment = {**os.environ, "SOURCE_DATE_EPOCH": epoch}
                done = self.run_zpkpack("build", self.source, "-o", "Out.app", status=1, env=environment)
                self.assertIn(b"SOURCE_DATE_EPOCH", done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
