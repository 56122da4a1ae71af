# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Each library names the libraries whose headers it includes, and no others: PUBLIC what its own headers
include, PRIVATE what only its sources include."""

import os
import pathlib
import re
import unittest

SOURCE = pathlib.Path(os.environ["ZPK_SOURCE_DIR"]).resolve()
ROOMS = ("Base", "Platform", "Archive", "Common", "Package", "Description", "UserInterface", "InstallerCore", "Tools")


class Library:
    def __init__(self, name, folder, arguments):
        self.name = name
        self.folder = folder
        words = re.split(r"\b(SOURCES|PUBLIC|PRIVATE)\b", arguments)
        lists = dict(zip(words[1::2], (part.split() for part in words[2::2])))
        self.sources = [os.path.normpath(folder / source) for source in lists["SOURCES"]]
        self.public = set(lists.get("PUBLIC", []))
        self.private = set(lists.get("PRIVATE", []))


def libraries():
    found = []
    for room in ROOMS:
        for path in sorted((SOURCE / room).rglob("CMakeLists.txt")):
            text = re.sub(r"#[^\n]*", "", path.read_text())
            for match in re.finditer(r"zpk_library\((\w+)(.*?)\)", text, re.DOTALL):
                found.append(Library(match[1], path.parent.relative_to(SOURCE), match[2]))
    return found


def includes(path):
    return re.findall(r'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', (SOURCE / path).read_text(), re.MULTILINE)


class LinkTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.libraries = libraries()
        self.assertGreaterEqual(len(self.libraries), 9)
        self.owners = {}
        folders = {}
        for library in self.libraries:
            folders.setdefault(str(library.folder), []).append(library.name)
            for source in library.sources:
                self.owners[re.sub(r"\.cpp$", ".h", source)] = library.name
        # A header without a source belongs to its folder's first library, on which the others stand.
        for folder, names in folders.items():
            for header in (SOURCE / folder).glob("*.h"):
                self.owners.setdefault(f"{folder}/{header.name}", names[0])

    def wanted(self, library):
        headers = [header for header, owner in self.owners.items() if owner == library.name]
        headers = [header for header in headers if (SOURCE / header).is_file()]
        of_headers = {self.owners.get(name) for header in headers for name in includes(header)}
        of_sources = {self.owners.get(name) for source in library.sources for name in includes(source)}
        itself = {None, library.name}
        return of_headers - itself, of_sources - of_headers - itself

    def test_each_library_links_what_it_includes(self):
        own = {library.name for library in self.libraries}
        for library in self.libraries:
            with self.subTest(library.name):
                # What is not of this project has no includes from its root.
                named = (library.public & own, library.private & own)
                self.assertEqual(named, self.wanted(library), "named, and included")


if __name__ == "__main__":
    unittest.main(verbosity=2)
