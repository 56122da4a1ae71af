# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What is said of the licences of everything carried: the kept lists, and the lists that a bundle brings along."""

import json
import os
import pathlib
import re
import unittest

SOURCE = pathlib.Path(os.environ["ZPK_SOURCE_DIR"]).resolve()
LICENSES = pathlib.Path(os.environ["ZPK_BUNDLE"]).resolve() / "Contents/Resources/Licenses"

LINES = (SOURCE / "Carry/licenses").read_text().splitlines()
EXCEPTIONS = {line.removeprefix("WITH ") for line in LINES if line.startswith("WITH ")}
IDENTIFIERS = {line for line in LINES if not line.startswith("WITH ")}
OPERATORS = {"AND", "OR", "WITH", "(", ")"}


def words_of(expression):
    return re.findall(r"[()]|[^\s()]+", expression)


class Expression:
    """A licence expression as SPDX writes it: identifiers, WITH, AND, OR and brackets. Raises ValueError."""

    def __init__(self, text):
        self.words = words_of(text)
        self.alternatives()
        if self.words:
            raise ValueError(f"not expected: {self.words[0]}")

    def next(self):
        return self.words[0] if self.words else None

    def alternatives(self):
        self.single()
        while self.next() in ("AND", "OR"):
            self.words.pop(0)
            self.single()

    def single(self):
        if self.next() == "(":
            self.words.pop(0)
            self.alternatives()
            if self.next() != ")":
                raise ValueError("a bracket is not closed")
            self.words.pop(0)
            return
        self.one_of(IDENTIFIERS)
        if self.next() == "WITH":
            self.words.pop(0)
            self.one_of(EXCEPTIONS)

    def one_of(self, known):
        if self.next() not in known:
            raise ValueError(f"unknown: {self.next()}")
        self.words.pop(0)


class KeptListsTest(unittest.TestCase):
    def setUp(self):
        self.packages = [line.split(" ", 1) for line in (SOURCE / "Carry/packages").read_text().splitlines()]

    def test_each_package_has_a_valid_expression(self):
        for name, expression in self.packages:
            with self.subTest(name):
                Expression(expression)

    def test_lists_are_in_order_without_twins(self):
        for lines in (LINES, [name for name, _ in self.packages]):
            self.assertEqual(lines, sorted(set(lines)))

    def test_every_kept_licence_is_used(self):
        used = {word for _, expression in self.packages for word in words_of(expression)}
        self.assertEqual(used - OPERATORS, IDENTIFIERS | EXCEPTIONS)

    def test_other_expressions_are_refused(self):
        for text in (
            "", "MITT", "mit", "GPL-2.0", "MIT AND", "MIT OR OR X11", "MIT X11", "(MIT", "MIT)", "()", "AND",
            "MIT WITH", "MIT WITH X11", "GPL-3.0-or-later WITH GCC-exception", "GCC-exception-3.1",
        ):
            with self.subTest(text), self.assertRaises(ValueError):
                Expression(text)


@unittest.skipUnless(LICENSES.is_dir(), f"script/carry has not filled {LICENSES}")
class SpdxTest(unittest.TestCase):
    """Each list by the rules of SPDX 2.3 that apply to it."""

    DOCUMENT = {"SPDXID", "spdxVersion", "dataLicense", "name", "documentNamespace", "creationInfo", "packages",
                "hasExtractedLicensingInfos", "relationships"}
    PACKAGE = {"SPDXID", "name", "versionInfo", "sourceInfo", "downloadLocation", "externalRefs", "licenseConcluded",
               "licenseDeclared", "licenseComments", "copyrightText", "filesAnalyzed"}

    def lists(self):
        for folder in (LICENSES, LICENSES / "Windows"):
            yield folder, json.loads((folder / "Packages.spdx.json").read_text())

    def test_documents(self):
        for _, document in self.lists():
            self.assertLessEqual(set(document), self.DOCUMENT)
            self.assertEqual(document["spdxVersion"], "SPDX-2.3")
            self.assertEqual(document["dataLicense"], "CC0-1.0")
            self.assertEqual(document["SPDXID"], "SPDXRef-DOCUMENT")
            self.assertTrue(document["name"])
            self.assertRegex(document["documentNamespace"], r"^https://[^#\s]+$")
            self.assertRegex(document["creationInfo"]["created"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
            self.assertTrue(document["creationInfo"]["creators"])
            for creator in document["creationInfo"]["creators"]:
                self.assertRegex(creator, "^(Tool|Person|Organization): .")

    def test_packages(self):
        for folder, document in self.lists():
            for package in document["packages"]:
                self.assertLessEqual(set(package), self.PACKAGE)
                self.assertRegex(package["SPDXID"], r"^SPDXRef-[A-Za-z0-9.-]+$")
                self.assertTrue(package["name"] and package["versionInfo"] and package["sourceInfo"])
                self.assertEqual(package["downloadLocation"], "NOASSERTION")
                self.assertIs(package["filesAnalyzed"], False)
                Expression(package["licenseDeclared"])
                for reference in package.get("externalRefs", []):
                    self.assertEqual(reference["referenceCategory"], "PACKAGE-MANAGER")
                    self.assertEqual(reference["referenceType"], "purl")
                    self.assertRegex(reference["referenceLocator"], r"^pkg:deb/debian/[\w.%-]+@[\w.%~-]+\?arch=\w+")
                text = folder / re.search(r"\S+$", package["licenseComments"])[0].rstrip(".")
                self.assertGreater(text.stat().st_size, 100, f"the licence of {package['name']}")

    def test_identifiers_are_unique_and_described(self):
        for _, document in self.lists():
            identifiers = [package["SPDXID"] for package in document["packages"]]
            self.assertEqual(len(identifiers), len(set(identifiers)))
            for relationship in document["relationships"]:
                self.assertEqual(relationship["spdxElementId"], "SPDXRef-DOCUMENT")
                self.assertEqual(relationship["relationshipType"], "DESCRIBES")
            self.assertEqual([each["relatedSpdxElement"] for each in document["relationships"]], identifiers)

    def test_own_licences_are_declared_where_they_are_used(self):
        for _, document in self.lists():
            used = {word for package in document["packages"] for word in words_of(package["licenseDeclared"])}
            infos = document.get("hasExtractedLicensingInfos", [])
            self.assertEqual({word for word in used if word.startswith("LicenseRef-")},
                             {info["licenseId"] for info in infos})
            self.assertTrue(all(info["extractedText"] for info in infos))

    def test_programs_name_what_they_hold(self):
        document = json.loads((LICENSES / "Packages.spdx.json").read_text())
        names = {package["name"] for package in document["packages"]}
        self.assertLessEqual({"zephyrkit", "libisal", "libplist", "libdeflate", "bzip2", "expat",
                              "libzstd", "libxxhash-dev", "libc6-dev", "libstdc++-12-dev", "libgcc-12-dev"}, names)

    def test_programs_have_the_pinned_versions(self):
        script = (SOURCE / "script/build-dependencies").read_text()
        pinned = dict(re.findall(r"^([a-z0-9]+) (\d\S*)$", script.split("packages='")[1].split("'")[0], re.MULTILINE))
        document = json.loads((LICENSES / "Packages.spdx.json").read_text())
        listed = {package["name"]: package["versionInfo"] for package in document["packages"]}
        self.assertEqual(len(pinned), 6)
        self.assertEqual(pinned, {name: listed.get(name) for name in pinned})

    def test_named_texts_are_there_once(self):
        programs, windows = ({path.name for path in (folder / "common-licenses").iterdir()}
                             for folder in (LICENSES, LICENSES / "Windows"))
        self.assertLessEqual({"LGPL-2.1", "GPL-3"}, programs)
        self.assertLessEqual({"LGPL-2.1", "LGPL-3", "GPL-3"}, programs | windows)
        self.assertEqual(programs & windows, set())


if __name__ == "__main__":
    unittest.main(verbosity=2)
