# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What stands in the staging folder's place and cannot be removed: there is no run, and nothing of it is started."""

import contextlib
import os
import pathlib
import pwd
import shutil
import subprocess
import unittest

from support import STAGING_NAME, PackageTestCase, wait_until, write

PLANTED = '#!/bin/sh\necho planted >> "$ZPK_TEST_RECORD"\n'


@unittest.skipUnless(os.geteuid() == 0, "it takes root to leave root's folder")
class LeftoverTest(PackageTestCase):
    """The launcher is an ordinary user's, in a temporary folder of their own, and names no program."""

    def setUp(self):
        super().setUp()
        self.user = pwd.getpwnam("nobody")
        self.staging = self.temporary / STAGING_NAME
        self.recorder()
        self.bundle = self.pack()
        for path in (self.folder, self.temporary, self.folder / "runtime"):
            self.give(path)

    def give(self, path):
        os.chown(path, self.user.pw_uid, self.user.pw_gid)

    def make_own(self, *names):
        """Folders of the person's."""
        for name in ("", *names):
            (self.staging / name).mkdir(mode=0o700)
            self.give(self.staging / name)

    def start_as_person(self):
        run = subprocess.Popen(
            [self.bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(LC_ALL="en_US.UTF-8"),
            cwd=self.temporary,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            user=self.user.pw_uid,
            group=self.user.pw_gid,
            extra_groups=[],
        )
        self.addCleanup(run.communicate)
        self.addCleanup(run.kill)
        return run

    def launched_as_person(self):
        """The status, and what was said on standard error."""
        run = self.start_as_person()
        said = run.communicate(timeout=60)[1]
        return run.returncode, said

    def assert_refused(self, kept):
        status, said = self.launched_as_person()
        self.assertEqual(status, 0, said)
        self.assertIn("The temporary folder could not be created.", said)
        self.assertFalse(self.record_path.exists(), "something was run")
        self.assertTrue(kept.exists())

    def plant_bundle(self, place):
        """As a setup program that has raised its rights leaves one."""
        self.describe_package("Planted")
        write(self.folder / "planted/Info/Startup.xml", "<Startup/>")
        planted = place / "Planted.app"
        shutil.copytree(self.bundle, planted, ignore=shutil.ignore_patterns("Frameworks", "PlugIns", "*.datx"))
        return write(planted / "Contents/Linux/Zephyrkit", PLANTED, 0o755)

    def test_launch_without_leftovers_installs(self):
        self.assertEqual(self.launched_as_person()[0], 0)
        self.assertEqual(len(self.records()), 1)

    def test_roots_folder(self):
        self.assert_refused(self.plant_bundle(self.staging / "Data"))

    def test_roots_bundle_in_the_persons_folder(self):
        self.make_own("Data")
        self.assert_refused(self.plant_bundle(self.staging / "Data"))

    def test_roots_description_in_the_persons_folder(self):
        program = write(self.folder / "planted", PLANTED, 0o755)
        self.make_own()
        self.assert_refused(write(self.staging / "Info/Startup.xml", f'<Startup Exec="{program}" Param=""/>'))

    @contextlib.contextmanager
    def mounted(self, kind, source, place):
        if subprocess.run(["mount", *kind, source, place], capture_output=True).returncode != 0:
            self.skipTest("this machine does not let root mount")
        try:
            yield
        finally:
            wait_until(lambda: subprocess.run(["umount", place], capture_output=True).returncode == 0, 60)

    def test_mounted_file_system(self):
        for name in ("", "Data"):
            with self.subTest(name=name):
                self.make_own(*([name] if name else []))
                place = self.staging / name
                with self.mounted(["-t", "tmpfs", "-o", "mode=0777"], "none", place):
                    self.assert_refused(write(place / ("setup" if name else "Data/setup"), PLANTED, 0o755))
                shutil.rmtree(self.staging, ignore_errors=True)

    def test_file_that_stays(self):
        """What a mount holds cannot be unlinked: like a file that root has made unchangeable."""
        archive = self.bundle / "Contents/Resources/Data.datx"
        for name, contents in (("Data/setup", PLANTED.encode()), ("Info.dat", archive.read_bytes())):
            with self.subTest(name=name):
                self.make_own(*pathlib.PurePath(name).parts[:-1])
                file = write(self.staging / name, contents, 0o755)
                self.give(file)
                with self.mounted(["--bind"], file, file):
                    self.assert_refused(file)
                shutil.rmtree(self.staging, ignore_errors=True)

    def test_descriptor_of_the_folder_before(self):
        """Whoever has an old folder open can put nothing into the new one."""
        gate = self.folder / "gate"
        os.mkfifo(gate)
        gate.chmod(0o666)
        write(self.source / "Data/setup", f"#!/bin/sh\n: > \"$ZPK_TEST_RECORD\"\nread -r line < '{gate}'\n", 0o755)
        self.bundle = self.pack("Another.app")
        self.make_own("Data")
        with contextlib.ExitStack() as opened:
            descriptors = [os.open(path, os.O_RDONLY) for path in (self.staging, self.staging / "Data")]
            for descriptor in descriptors:
                opened.callback(os.close, descriptor)
            run = self.start_as_person()
            wait_until(self.record_path.exists, 60)
            for descriptor in descriptors:
                with self.assertRaises(FileNotFoundError):
                    os.open("file", os.O_CREAT | os.O_WRONLY, dir_fd=descriptor)
            gate.write_text("go\n")
            run.communicate(timeout=60)
        self.assertEqual(run.returncode, 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
