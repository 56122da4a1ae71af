# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The vendor's way through Docs/Packaging.md: every command in it, in its order, in an empty folder."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import unittest

from support import BUILD, PackageTestCase, light_template, link_or_copy, write

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENT = ROOT / "Docs/Packaging.md"
README = ROOT / "README.md"
FENCE = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)
STEP = re.compile(r"^ +run: (.*)$", re.M)


def commands(text):
    """What the document has people and their machines run, in its order."""
    script = ""
    for kind, block in FENCE.findall(text):
        script += block if kind == "sh" else "".join(line + "\n" for line in STEP.findall(block))
    return script


class PackagingTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.home = self.folder / "home"
        self.home.mkdir(mode=0o700)
        self.work = self.folder / "empty"
        self.work.mkdir()
        self.place_program()

    def place_program(self):
        """The packager as it is installed, with a template that carries no windows: they take the time."""
        self.bin = self.folder / "bin"
        shutil.copytree(light_template(), self.bin / "Zephyrkit.app", copy_function=link_or_copy)
        for name in ("zpkpack", "zephyrkit-run", "zephyrkit-preview", "zephyrkit-preview-screen.so", "zephyrkit-draw"):
            link_or_copy(BUILD / name, self.bin / name)

    def end_key_agent(self, environment):
        subprocess.run(["gpgconf", "--kill", "all"], env=environment, check=True, capture_output=True)

    def follow(self, script):
        environment = self.environment(
            HOME=str(self.home), GNUPGHOME=str(self.home), PATH=f"{self.bin}:{os.environ['PATH']}",
            GIT_AUTHOR_NAME="A", GIT_AUTHOR_EMAIL="a@example.org", GIT_COMMITTER_NAME="A",
            GIT_COMMITTER_EMAIL="a@example.org", GIT_CONFIG_NOSYSTEM="1", SOURCE_DATE_EPOCH=None)
        self.addCleanup(self.end_key_agent, environment)
        file = write(self.folder / "script", "set -eux\n" + script)
        return subprocess.run(["sh", file], cwd=self.work, env=environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=300)

    def test_every_command_of_the_document_works_in_its_order(self):
        done = self.follow(commands(DOCUMENT.read_text()))
        self.assertEqual(done.returncode, 0, done.stderr)
        # What the document says that one sees.
        self.assertIn("Hello! This file lies in the folder Data.", done.stdout)
        self.assertIn("Hello from a program that was installed.", done.stdout)
        self.assertIn("Hello Suite 1", done.stderr)
        self.assertIn("HelloSetup.run is as it was built", done.stderr)
        self.assertIn("HelloSetup.run: OK", done.stdout)
        self.assertIn("[allow-unused]", done.stdout)
        self.assertIn("Good signature", done.stderr)
        report = json.loads((self.work / "zpkpack.sarif").read_text())
        self.assertEqual(report["runs"][0]["results"], [])
        self.assertEqual(os.stat(self.work / "HelloSetup.run").st_mode & 0o111, 0o111)
        table = self.work / "HelloSetup.app/Contents/Resources/UILang/en/ZPKStringTable.def"
        self.assertIn("Unpacking Hello…", table.read_text())
        self.assertEqual(list(self.work.glob(".zpk-*")), [])
        pictures = {code: len(list((self.work / "Pictures" / code).glob("*.png"))) for code in ("de", "en")}
        self.assertGreater(pictures["de"], 10)
        self.assertEqual(pictures["de"], pictures["en"])

    def test_the_first_package_of_the_readme_is_made_and_opens(self):
        lines = commands(README.read_text())
        self.assertEqual(lines.count("\nzpkpack build "), 2, lines)
        done = self.follow(lines)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("Hello! This file lies in the folder Data.", done.stdout)
        self.assertTrue((self.work / "FirstSetup.app").is_dir())

    def test_a_command_that_fails_is_noticed(self):
        first, second, _ = commands(DOCUMENT.read_text()).split("\n", 2)
        self.assertEqual(self.follow(first).returncode, 0)
        self.assertNotEqual(self.follow(f"{second} --no-such-option\nexit 0\n").returncode, 0)

    def test_nothing_stands_between_fences_that_is_not_run(self):
        text = DOCUMENT.read_text()
        self.assertEqual({kind for kind, _ in FENCE.findall(text)}, {"sh", "yaml"})
        self.assertEqual(text.count("```"), 2 * len(FENCE.findall(text)))
        self.assertNotRegex(commands(text), r"\|\||; *true|set \+e")

    def test_every_link_leads_to_a_page_and_a_heading(self):
        documents = [README, ROOT / "CONTRIBUTING.md", *(ROOT / "Docs").glob("*.md")]
        links = [(document, *link) for document in documents
                 for link in re.findall(r"\]\((?!https?:)([\w./-]+)?(?:#([\w-]+))?\)", document.read_text())]
        self.assertGreater(len(links), 40)
        for document, page, heading in links:
            target = document.parent / page if page else document
            self.assertTrue(target.exists(), (document, page))
            text = target.read_text() if target.suffix == ".md" else ""
            marks = {re.sub(r"[^\w -]", "", line.lower()).replace(" ", "-")
                     for line in re.findall(r"^#+ (.*)$", text, re.M)}
            self.assertTrue(not heading or heading in marks, (document, page, heading))


if __name__ == "__main__":
    unittest.main(verbosity=2)
