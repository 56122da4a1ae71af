# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The packager as a vendor runs it: what it says, what it leaves, and what ends it."""

import contextlib
import os
import shutil
import signal
import subprocess
import unittest

from support import BUILD, TEMPLATE, PackageTestCase, wait_until, write


CARRIED = TEMPLATE / "Contents/Frameworks"


class PackagerTestCase(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()

    def build(self, *arguments, **settings):
        return subprocess.run(
            [BUILD / "zpkpack", "build", *map(str, arguments)],
            capture_output=True,
            text=True,
            cwd=self.folder,
            **settings,
        )

    def listing(self):
        return sorted(str(path.relative_to(self.folder)) for path in self.folder.rglob("*"))


class PackagerTest(PackagerTestCase):
    """What it makes, and its words to a vendor."""

    def test_same_source_gives_the_same_bytes(self):
        first, second = self.pack("A.app"), self.pack("B.app")
        for name in ("Info.datx", "Data.datx"):
            self.assertEqual(
                (first / "Contents/Resources" / name).read_bytes(),
                (second / "Contents/Resources" / name).read_bytes(),
            )

    def test_refusals_name_the_cause_and_leave_nothing(self):
        rows = [
            ("no source", lambda: shutil.rmtree(self.source), "source"),
            ("no payload", lambda: shutil.rmtree(self.source / "Data"), "Data"),
            ("no description", lambda: (self.source / "Package.strings").unlink(), "Package.strings"),
            (
                "identifier without the name",
                lambda: write(
                    self.source / "Package.strings",
                    '"CFBundleName" = "A"; "CFBundleIdentifier" = "com.example.B";',
                ),
                "last part",
            ),
            ("broken startup", lambda: write(self.source / "Info/Startup.xml", "<Startup"), "Startup.xml"),
            ("broken conditions", lambda: write(self.source / "Info/Condition.xml", "<a>"), "Condition.xml"),
            ("broken languages", lambda: write(self.source / "UILang/Languages.xml", "<a/>"), "Languages.xml"),
        ]
        copy = self.folder / "copy"
        shutil.copytree(self.source, copy)
        for name, spoil, expected in rows:
            with self.subTest(name):
                shutil.rmtree(self.source, ignore_errors=True)
                shutil.copytree(copy, self.source)
                spoil()
                before = sorted(os.listdir(self.folder))
                done = self.build(self.source, "-o", "Out.app")
                self.assertEqual(done.returncode, 1)
                self.assertIn(expected, done.stderr)
                self.assertEqual(sorted(os.listdir(self.folder)), before)

    def test_existing_output_is_kept_unless_forced(self):
        bundle = self.pack()
        done = self.build(self.source, "-o", bundle)
        self.assertEqual(done.returncode, 1)
        self.assertIn("--force", done.stderr)
        self.assertEqual(self.build(self.source, "-o", bundle, "--force").returncode, 0)
        self.launch(bundle)

    def test_output_never_meets_what_it_is_made_of(self):
        holder = self.folder / "Holder.app"
        shutil.copytree(self.source, holder / "source")
        template = self.folder / "Template.app"
        shutil.copytree(TEMPLATE, template)
        rows = [
            (holder / "source", holder, "is or holds"),
            (self.source, template, "is or holds"),
            (self.source, self.source / "Data/Out.app", "is packed"),
            (self.source, self.source / "Data/../Info/Out.app/", "is packed"),
        ]
        for source, output, expected in rows:
            with self.subTest(output=output):
                before = sorted(self.folder.rglob("*"))
                done = self.build(source, "-o", str(output) + "/", "--template", template, "--force")
                self.assertEqual(done.returncode, 1)
                self.assertIn(expected, done.stderr)
                self.assertEqual(sorted(self.folder.rglob("*")), before)
        self.assertEqual(self.build(self.source, "-o", self.source / "Out.app").returncode, 0)

    def test_output_name_must_be_a_bundle(self):
        done = self.build(self.source, "-o", "Out")
        self.assertEqual(done.returncode, 2)
        self.assertIn(".app", done.stderr)


class CarriedWindowsTest(PackagerTestCase):
    """With and without what windows need: what a package weighs, and that it runs."""

    def made(self, *arguments):
        """What the packager says of a bundle: its windows, and its bytes."""
        done = self.build(self.source, "-o", "Out.app", "--force", *arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        path, windows, bundle = done.stdout.splitlines()
        self.assertEqual(path, "Out.app")
        files = [path for path in (self.folder / path).rglob("*") if path.is_file()]
        size = sum(path.stat().st_size for path in files)
        self.assertEqual(bundle, "bundle: %d files, %d bytes" % (len(files), size))
        return windows, size

    def test_without_windows_it_is_small_and_installs(self):
        bundle = self.pack("Small.app", "--without-windows")
        contents = bundle / "Contents"
        self.assertEqual(sorted(os.listdir(contents)), ["Helpers", "Info.plist", "Linux", "Resources"])
        self.assertEqual(list(contents.glob("Resources/*.ui")), [])
        self.launch(bundle)
        self.assertEqual(self.record()["arguments"], ["--test"])

    @unittest.skipUnless(CARRIED.is_dir(), "this build shares the machine's libraries")
    def test_sizes_of_a_package_without_payload(self):
        windows, size = self.made()
        self.assertIn(" libraries carried, ", windows)
        self.assertLessEqual(size, 55_000_000)
        windows, size = self.made("--without-windows")
        self.assertIn("none", windows)
        self.assertLessEqual(size, 4_000_000)

    @unittest.skipUnless(CARRIED.is_dir(), "this build shares the machine's libraries")
    def test_another_set_of_parts(self):
        parts = self.folder / "parts"
        shutil.copytree(CARRIED, parts)
        (parts / "libQt6Core.so.6").unlink()
        refused = self.build(self.source, "-o", "Out.app", "--frameworks", parts)
        self.assertEqual(refused.returncode, 1)
        self.assertIn("parts/libQt6Core.so.6: No such file or directory", refused.stderr)
        another = (CARRIED / "libQt6Gui.so.6").read_bytes()
        write(parts / "libQt6Core.so.6", another)
        bundle = self.pack("Out.app", "--frameworks", str(parts))
        self.assertEqual((bundle / "Contents/Frameworks/libQt6Core.so.6").read_bytes(), another)

    def test_windows_are_left_out_or_chosen_but_not_both(self):
        done = self.build(self.source, "-o", "Out.app", "--without-windows", "--frameworks", "x")
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("excludes", done.stderr)


class PackagerEndsTest(PackagerTestCase):
    """A build that does not come to its end leaves no output, and nothing else."""

    def small_template(self):
        template = self.folder / "Template.app"
        write(template / "Contents/Linux/Zephyrkit", "#!/bin/sh\n", 0o755)
        shutil.copy(TEMPLATE / "Contents/Info.plist", template / "Contents/Info.plist")
        (template / "Contents/Resources").mkdir()
        return template

    @contextlib.contextmanager
    def build_half_way(self, size=7 << 30, **settings):
        """A build that is packing a payload, which takes it seconds."""
        template = self.small_template()
        write(self.source / "Data/large", "")
        os.truncate(self.source / "Data/large", size)
        self.before = self.listing()
        process = subprocess.Popen(
            [BUILD / "zpkpack", "build", self.source, "-o", "Out.app", "--template", template],
            cwd=self.folder,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            start_new_session=True,
            **settings,
        )

        def packs_the_payload():
            self.assertIsNone(process.poll(), "it ended before its time")
            return list(self.folder.glob(".zpk-*/*.app/Contents/Resources/Info.datx"))

        try:
            wait_until(packs_the_payload, 30)
            yield process
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()

    def test_a_signal_that_asks_it_to_end_leaves_nothing(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number), self.build_half_way() as process:
                process.send_signal(number)
                self.assertEqual(process.wait(20), -number)
                self.assertEqual(self.listing(), self.before)
            shutil.rmtree(self.folder / "Template.app")

    def test_the_interrupt_key_ends_all_of_it(self):
        with self.build_half_way() as process:
            os.killpg(process.pid, signal.SIGINT)
            self.assertEqual(process.wait(20), -signal.SIGINT)
            self.assertEqual(self.listing(), self.before)
            with self.assertRaises(ProcessLookupError):
                os.killpg(process.pid, 0)

    def test_a_build_that_was_told_to_outlive_its_terminal_does(self):
        def ignore_hangup():
            signal.signal(signal.SIGHUP, signal.SIG_IGN)

        with self.build_half_way(1 << 30, preexec_fn=ignore_hangup) as process:
            process.send_signal(signal.SIGHUP)
            self.assertEqual(process.wait(60), 0)
            self.assertTrue((self.folder / "Out.app/Contents/Resources/Data.datx").is_file())

    def test_killed_outright_it_leaves_no_output_and_no_process(self):
        with self.build_half_way() as process:
            process.kill()
            process.wait()

            def group_is_gone():
                try:
                    os.killpg(process.pid, 0)
                    return False
                except ProcessLookupError:
                    return True

            wait_until(group_is_gone, 20)
            left = [name for name in self.listing() if not name.startswith(".zpk-")]
            self.assertEqual(left, self.before)
            self.assertNotEqual(self.listing(), self.before)
            # Whoever works there next removes what was left.
            subprocess.run([BUILD / "zpkpack", "new", "Next"], cwd=self.folder, check=True, capture_output=True)
            shutil.rmtree(self.folder / "Next")
            self.assertEqual(self.listing(), self.before)

    def test_a_build_is_left_alone_by_another_one_beside_it(self):
        with self.build_half_way() as process:
            subprocess.run([BUILD / "zpkpack", "new", "Next"], cwd=self.folder, check=True, capture_output=True)
            self.assertIsNone(process.poll())
            self.assertEqual(len(list(self.folder.glob(".zpk-*/*.app/Contents/Resources/Info.datx"))), 1)

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_is_told_and_leaves_nothing(self):
        write(self.source / "Data/noise", os.urandom(3_000_000))
        template = self.small_template()
        # The first disk ends while the archive is made, the second one while it is scrambled.
        for size, expected in ((2_000_000, "Data.dat: "), (4_500_000, "Data.datx: ")):
            with self.subTest(size), self.disk(f"size={size}") as disk:
                done = self.build(self.source, "-o", disk / "Out.app", "--template", template)
                self.assertEqual(done.returncode, 1)
                self.assertIn(expected + "No space left on device", done.stderr)
                self.assertEqual(os.listdir(disk), [])

    def test_a_file_system_without_exchange_takes_the_bundle_all_the_same(self):
        template = self.small_template()
        for turn in range(2):
            with self.subTest(turn):
                done = subprocess.run(
                    ["strace", "-f", "-qq", "-o", self.folder / "trace", "-e", "trace=renameat2"]
                    + ["-e", "inject=renameat2:error=EINVAL"]
                    + [BUILD / "zpkpack", "build", self.source, "-o", "Out.app", "--template", template, "--force"],
                    cwd=self.folder,
                    capture_output=True,
                    text=True,
                )
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertIn("INJECTED", (self.folder / "trace").read_text())
                self.assertTrue((self.folder / "Out.app/Contents/Resources/Data.datx").is_file())
                self.assertEqual(list(self.folder.glob(".zpk-*")), [])

    def test_what_a_person_reads_is_one_harmless_line(self):
        done = self.build(self.source, "-o", "nowhere/\x1b[2J\u202e\n.app")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr.count("\n"), 1)
        self.assertNotIn("\x1b", done.stderr)
        self.assertNotIn("\u202e", done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
