# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the tests of the packager's commands share: a source, small packages of it, and runs."""

import gzip
import hashlib
import os
import shutil
import subprocess
import unittest

from support import BUILD, TEMPLATE, PackageTestCase, odc_archive, write

ROTATION = 102400


def scrambled(plain):
    return plain[ROTATION:] + plain[:ROTATION] if len(plain) > ROTATION else plain


def with_processors(count, folder):
    """What makes a command believe that the machine has so many processors: the C library asks a file for it."""
    online = write(folder / f"online-{count}", f"0-{count - 1}\n" if count > 1 else "0\n")
    place = "/sys/devices/system/cpu/online"
    prefix = ["unshare", "--map-root-user", "--mount", "sh", "-c", f'mount --bind "$0" {place} && exec "$@"', str(online)]
    asked = subprocess.run([*prefix, "cat", place], capture_output=True)
    if asked.stdout != online.read_bytes():
        raise unittest.SkipTest("this machine allows no mount table of one's own")
    return prefix


class CommandTestCase(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()
        self.template = self.folder / "Template.app"
        write(self.template / "Contents/Linux/Zephyrkit", "#!/bin/sh\n", 0o755)
        shutil.copy(TEMPLATE / "Contents/Info.plist", self.template / "Contents/Info.plist")
        (self.template / "Contents/Resources").mkdir()

    def run_zpkpack(self, *arguments, status=0, **settings):
        done = subprocess.run(
            [BUILD / "zpkpack", *arguments], capture_output=True, cwd=self.folder, timeout=120, **settings
        )
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertNotIn(b"\x1b", done.stdout + done.stderr)
        self.assertEqual(list(self.folder.glob(".zpk-*")), [])
        return done

    def small_package(self, name, *arguments):
        self.run_zpkpack("build", self.source, "-o", name, "--template", self.template, *arguments)
        return self.folder / name

    def hostile_bundle(self, members, name="Hostile.app"):
        """A bundle whose payload has the members (name, mode, contents)."""
        resources = self.folder / name / "Contents/Resources"
        resources.mkdir(parents=True)
        for archive, content in (("Info", [("Info", 0o040755, b"")]), ("Data", members)):
            packed = gzip.compress(odc_archive(content), mtime=0)
            write(resources / f"{archive}.datx", scrambled(packed))
        return self.folder / name

    @staticmethod
    def sum_of(path):
        with open(path, "rb") as file:
            return hashlib.file_digest(file, "sha256").hexdigest()

    def tree(self, folder):
        """Everything below a folder: path, mode, link text or a sum of the contents."""
        rows = []
        for path in sorted(folder.rglob("*"), key=os.fsencode):
            status = path.lstat()
            what = os.readlink(path) if path.is_symlink() else self.sum_of(path) if path.is_file() else None
            rows.append((str(path.relative_to(folder)), oct(status.st_mode), what))
        return rows
