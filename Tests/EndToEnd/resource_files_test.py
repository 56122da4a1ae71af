# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Each file that the launcher reads, with something else in its place: a run ends as if nothing were there."""

import contextlib
import gzip
import os
import re
import resource
import socket
import stat
import subprocess
import unittest

from support import TEMPLATE, PackageTestCase, odc_archive, write, x_server

NOBODY = 65534

# Enough for the windows, and far less than what a device would give.
MEMORY = 2 << 30

HUGE = 64 << 30

UNMET = "<UpdateInfo><Conditions><Registry/></Conditions></UpdateInfo>"


def link(target):
    return lambda path: path.symlink_to(target)


def make_socket(path):
    # The name of a socket is short.
    with socket.socket(socket.AF_UNIX) as end:
        folder = os.open(path.parent, os.O_PATH)
        try:
            end.bind(f"/proc/self/fd/{folder}/{path.name}")
        finally:
            os.close(folder)


def make_huge(path):
    with open(path, "wb") as file:
        file.truncate(HUGE)


def make_device(path):
    os.mknod(path, stat.S_IFCHR | 0o666, os.makedev(1, 5))


# What opening does not turn into a file. Root may make devices.
NO_FILES = {
    "FIFO": os.mkfifo,
    "link to a FIFO": lambda path: (os.mkfifo(f"{path}.fifo"), path.symlink_to(f"{path.name}.fifo")),
    "folder": os.mkdir,
    "socket": make_socket,
    "link to a device": link("/dev/zero"),
    "loop": lambda path: path.symlink_to(path.name),
    **({"device": make_device} if os.geteuid() == 0 else {}),
}

# Files, but none that can be used.
BAD_FILES = {"empty": lambda path: write(path, b""), "huge": make_huge}

PLACE_OF_TABLE = "Contents/Resources/UILang/en/ZPKStringTable.def"


class ResourceFileCase(PackageTestCase):
    def setUp(self):
        super().setUp()
        reader, self.terminal = os.openpty()
        for end in (reader, self.terminal):
            self.addCleanup(os.close, end)

    def kinds(self, with_bad_files):
        kinds = {**NO_FILES, "terminal": link(os.ttyname(self.terminal)), **(BAD_FILES if with_bad_files else {})}
        return kinds.items()

    @contextlib.contextmanager
    def replaced(self, path, make):
        """Puts what `make` makes, or nothing, in the file's place for a while."""
        kept = path.with_name(path.name + ".kept")
        path.rename(kept)
        if make is not None:
            make(path)
        try:
            yield
        finally:
            if path.is_dir() and not path.is_symlink():
                path.rmdir()
            else:
                path.unlink(missing_ok=True)
            path.with_name(path.name + ".fifo").unlink(missing_ok=True)
            kept.rename(path)

    def outcome(self, bundle, user=None, **variables):
        """How a run ends: its status, its words without those of a reason, and whether something was installed."""
        launcher = subprocess.Popen(
            [bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(LC_ALL="en_US.UTF-8", **variables),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            cwd=self.folder,
            user=user,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY)),
            # A terminal that is opened would become this session's.
            start_new_session=True,
        )
        self.addCleanup(launcher.kill)
        out, err = launcher.communicate(timeout=60)
        self.assert_nothing_left()
        installed = [record["arguments"] for record in self.records()]
        self.record_path.unlink(missing_ok=True)
        told = [line for line in err.splitlines() if ": cannot unpack " not in line]
        return launcher.returncode, out, [re.sub(r"(\.ui: |: (?!.*: )).*", "", line) for line in told], installed

    def check(self, bundle, places, with_bad_files=(), **variables):
        """Anything in the place of one of the files ends as nothing does; only `with_bad_files` are asked for more."""
        for place in places:
            path = bundle / place
            with self.replaced(path, None):
                missing = self.outcome(bundle, **variables)
            self.assertIn(missing[0], (0, 1), missing)
            for kind, make in self.kinds(place in with_bad_files):
                with self.subTest(place=place, kind=kind), self.replaced(path, make):
                    self.assertEqual(self.outcome(bundle, **variables), missing)


class ResourceFilesTest(ResourceFileCase):
    def bundle_that_installs_nothing(self):
        """Reads its texts, and ends without the second that a full bar is shown."""
        write(self.source / "Info/Condition.xml", UNMET)
        return self.simple_package()

    def test_files_of_the_bundle(self):
        bundle = self.bundle_that_installs_nothing()
        write(bundle / "Contents/Resources/InfoPlist.strings", '"CFBundleName" = "Another";\n')
        whole = self.outcome(bundle)
        self.assertEqual(whole[0], 0)
        self.assertIn("GetStringForKey", whole[2][0])
        places = ["Contents/Resources/InfoPlist.strings", PLACE_OF_TABLE, "Contents/Resources/UILang/Languages.xml"]
        self.check(bundle, places, places)
        self.check(bundle, ["Contents/Info.plist", "Contents/Helpers/ditto"])

    def test_archives(self):
        bundle = self.simple_package()
        self.assertEqual(self.outcome(bundle)[3], [["--test"]])
        self.check(bundle, ["Contents/Resources/Info.datx", "Contents/Resources/Data.datx"])

    def test_list_of_installed_software(self):
        write(self.source / "Info/Condition.xml", UNMET.replace("<Registry/>", '<UIMLog Signature="a"/>'))
        bundle = self.simple_package()
        library = self.folder / "library"
        name = "Preferences/com.varno.ic_installer.plist"
        write(library / name, '"Varno Utilities" = (a);\n')
        self.assertEqual(self.outcome(bundle, XDG_DATA_DIRS=str(library))[3], [["--test"]])
        (library / name).rename(bundle / "Contents/list")
        (library / name).symlink_to(bundle / "Contents/list")
        self.check(bundle, ["Contents/list"], ["Contents/list"], XDG_DATA_DIRS=str(library))

    @unittest.skipUnless(os.geteuid() == 0, "root alone can start the launcher as somebody who may not read a file")
    def test_files_that_may_not_be_read(self):
        bundle = self.bundle_that_installs_nothing()
        write(bundle / "Contents/Resources/InfoPlist.strings", '"CFBundleName" = "Another";\n')
        self.folder.chmod(0o755)
        for folder in (self.temporary, self.folder / "runtime"):
            os.chown(folder, NOBODY, NOBODY)
        places = ["Contents/Resources/InfoPlist.strings", PLACE_OF_TABLE, "Contents/Resources/UILang/Languages.xml"]
        for place in places:
            with self.subTest(place=place):
                with self.replaced(bundle / place, None):
                    missing = self.outcome(bundle, user=NOBODY)
                with self.replaced(bundle / place, lambda path: write(path, b"", 0)):
                    self.assertEqual(self.outcome(bundle, user=NOBODY), missing)


class DescriptionFilesTest(ResourceFileCase):
    """An archive brings no FIFO and no device, but links to them, and folders."""

    def members(self, name):
        outside = {
            "FIFO": self.folder / "fifo",
            "device": "/dev/zero",
            "terminal": os.ttyname(self.terminal),
            "folder": self.folder,
            "nothing": self.folder / "nothing",
        }
        os.mkfifo(outside["FIFO"])
        for kind, target in outside.items():
            yield f"link to {kind}", (name, 0o120777, os.fsencode(target))
        yield "loop", (name, 0o120777, os.fsencode(name.split("/")[-1]))
        yield "folder", (name, 0o40755, b"")
        yield "empty", (name, 0o100644, b"")
        yield "unreadable", (name, 0o100000, b"")
        yield "huge", (name, 0o100644, bytes(17 << 20))

    def put(self, bundle, *members):
        archive = gzip.compress(odc_archive([("Info", 0o40755, b""), *members]), compresslevel=1)
        self.assertLess(len(archive), 102400, "a longer one would have to be scrambled")
        (bundle / "Contents/Resources/Info.datx").write_bytes(archive)

    def test_start_description(self):
        bundle = self.simple_package()
        for kind, member in self.members("Info/Startup.xml"):
            with self.subTest(kind=kind):
                self.put(bundle, member)
                status, _, _, installed = self.outcome(bundle)
                self.assertEqual((status, installed), (0, [[]]))

    def test_conditions(self):
        bundle = self.simple_package()
        for kind, member in self.members("Info/Condition.xml"):
            with self.subTest(kind=kind):
                self.put(bundle, member)
                status, _, _, installed = self.outcome(bundle)
                self.assertEqual((status, installed), (0, []))


@unittest.skipUnless((TEMPLATE / "Contents/Frameworks").is_dir(), "this build shares the machine's libraries")
class WindowFilesTest(ResourceFileCase):
    def setUp(self):
        super().setUp()
        self.display = self.enterContext(x_server())

    def test_forms(self):
        bundle = self.simple_package()
        places = ["Contents/Resources/" + name for name in ("MainMenu.ui", "ProgressWindow.ui")]
        self.check(bundle, places, places, DISPLAY=self.display)

    def test_carried_parts(self):
        write(self.source / "Info/Condition.xml", UNMET)
        bundle = self.simple_package()
        # The names are shared with the template, and what stands in their place must not be.
        frameworks = ["Parts", "Zephyrkit-desktop", "libQt6Core.so.6", "plugins/platforms/libqxcb.so"]
        places = ["Contents/PlugIns/ZPKDesktop.so", *("Contents/Frameworks/" + name for name in frameworks)]
        self.check(bundle, places, DISPLAY=self.display)

    def test_plug_ins_that_nobody_lists(self):
        bundle = self.simple_package()
        whole = self.outcome(bundle, DISPLAY=self.display)
        self.assertEqual(whole[3], [["--test"]])
        more = bundle / "Contents/Frameworks/plugins/platforms/libmore.so"
        for kind, make in self.kinds(True):
            with self.subTest(kind=kind):
                write(more, b"")
                with self.replaced(more, make):
                    self.assertEqual(self.outcome(bundle, DISPLAY=self.display), whole)


if __name__ == "__main__":
    unittest.main(verbosity=2)
