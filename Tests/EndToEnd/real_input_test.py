# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""At least 200 MB of this machine's own files, through a package and back."""

import hashlib
import json
import os
import pathlib
import shutil
import textwrap
import unittest

from support import PackageTestCase, write, x_server

# Many small files from the first folders, large ones from the last.
SOURCES = (("/usr/share", 60_000_000), ("/usr/include", 90_000_000), ("/usr/lib", 210_000_000))

# The setup program: compares the payload beside it with the list that was made before packing.
CHECKER = textwrap.dedent(
    """\
    #!/usr/bin/env python3
    import hashlib, json, os, stat, sys
    here = os.fsencode(os.path.dirname(os.path.abspath(__file__)))
    with open(os.path.join(here, b"list.json")) as file:
        expected = json.load(file)
    problems = []
    found = set()
    tree = os.path.join(here, b"tree")
    for where, folders, files in os.walk(tree):
        for name in folders + files:
            found.add(os.fsdecode(os.path.relpath(os.path.join(where, name), tree)))
    for name in sorted(found ^ set(expected)):
        problems.append(("only here" if name in found else "missing") + ": " + repr(name))
    inodes = {}
    for name, item in expected.items():
        if name not in found:
            continue
        path = os.path.join(tree, os.fsencode(name))
        status = os.lstat(path)
        actual = {"mode": status.st_mode & ~0o6000, "time": int(status.st_mtime)}
        if stat.S_ISLNK(status.st_mode):
            actual["target"] = os.fsdecode(os.readlink(path))
            actual.pop("time")
            actual["mode"] = stat.S_IFMT(status.st_mode)
        elif stat.S_ISREG(status.st_mode):
            with open(path, "rb") as file:
                actual["sha256"] = hashlib.file_digest(file, "sha256").hexdigest()
            inodes.setdefault(item.get("link group"), set()).add(status.st_ino)
            if "link group" in item:
                actual["link group"] = item["link group"]
        if actual != item:
            problems.append("%r: %r instead of %r" % (name, actual, item))
    for group, numbers in inodes.items():
        if group is not None and len(numbers) != 1:
            problems.append("hard links apart: %r" % group)
    with open(os.environ["ZPK_TEST_RECORD"], "a") as file:
        file.write(json.dumps({"checked": len(expected), "problems": problems[:20],
                               "arguments": sys.argv[1:]}) + "\\n")
    """
)


def copy_until(target, source, copied, wanted):
    """Copies files, folders and links of the machine into `target` until `wanted` bytes are there."""
    for where, folders, files in os.walk(source):
        folders.sort()
        destination = target / where.lstrip("/")
        destination.mkdir(parents=True, exist_ok=True)
        links = [name for name in folders if os.path.islink(os.path.join(where, name))]
        for name in sorted(files) + links:
            item = pathlib.Path(where, name)
            status = item.lstat()
            if not (item.is_symlink() or item.is_file()) or status.st_size > 50_000_000 or copied >= wanted:
                continue
            shutil.copy2(item, destination / name, follow_symlinks=False)
            copied += 0 if item.is_symlink() else status.st_size
        shutil.copystat(where, destination)
        if copied >= wanted:
            break
    return copied


def add_oddities(target):
    odd = os.fsencode(target / "odd")
    os.mkdir(odd)
    for index, name in enumerate((b"line\nbreak", b"latin-\xe9", b" blank ", b"-dash", b"quote'\"", b"\xf0\x9f\x98\x80")):
        path = os.path.join(odd, name)
        with open(path, "wb") as file:
            file.write(os.urandom(1000 * index))
        os.chmod(path, (0o400, 0o555, 0o4755, 0o600, 0o777, 0o644)[index])
    os.mkdir(os.path.join(odd, b"empty"), 0o700)
    os.symlink(b"nowhere/at/all", os.path.join(odd, b"dangling"))
    os.symlink(b"/etc/passwd", os.path.join(odd, b"absolute"))
    first = os.path.join(odd, b"linked-1")
    with open(first, "wb") as file:
        file.write(b"linked" * 5000)
    os.link(first, os.path.join(odd, b"linked-2"))
    os.mkdir(os.path.join(odd, b"sealed"))
    with open(os.path.join(odd, b"sealed", b"inside"), "wb") as file:
        file.write(b"inside a folder that nobody may write to")
    os.chmod(os.path.join(odd, b"sealed"), 0o555)


def list_tree(tree):
    """Name, mode, digest, link target and time of everything below `tree`."""
    items = {}
    root = os.fsencode(tree)
    for where, folders, files in os.walk(root):
        for name in folders + files:
            path = os.path.join(where, name)
            status = os.lstat(path)
            item = {"mode": status.st_mode & ~0o6000, "time": int(status.st_mtime)}
            if os.path.islink(path):
                item = {"mode": 0o120000, "target": os.fsdecode(os.readlink(path))}
            elif os.path.isfile(path):
                with open(path, "rb") as file:
                    item["sha256"] = hashlib.file_digest(file, "sha256").hexdigest()
                if status.st_nlink > 1:
                    item["link group"] = str(status.st_ino)
            items[os.fsdecode(os.path.relpath(path, root))] = item
    return items


class RealInputTest(PackageTestCase):
    def test_own_files_come_back_on_desktop_and_terminal(self):
        tree = self.source / "Data/tree"
        copied = 0
        for source, wanted in SOURCES:
            copied = copy_until(tree, source, copied, wanted)
        self.assertGreaterEqual(copied, 200_000_000, "this machine has too few files")
        add_oddities(tree)
        expected = list_tree(tree)
        self.assertGreater(len(expected), 2000)
        write(self.source / "Data/list.json", json.dumps(expected))
        write(self.source / "Data/setup", CHECKER, 0o755)
        self.startup(param="check it")
        bundle = self.pack()
        print(f"{len(expected)} items, {copied} bytes, {(bundle / 'Contents/Resources/Data.datx').stat().st_size} packed")

        with x_server() as display:
            self.launch(bundle, timeout=300, DISPLAY=display)
        self.launch(bundle, timeout=300)
        for record in self.records():
            self.assertEqual(record, {"checked": len(expected), "problems": [], "arguments": ["check it"]})
        self.assertEqual(len(self.records()), 2)


if __name__ == "__main__":
    unittest.main(verbosity=2)
