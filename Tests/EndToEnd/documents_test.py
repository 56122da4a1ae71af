# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The commands that stand by themselves in the documents: each is run as it stands there, or, where it would take this
whole build, its options are looked up in what it names. Docs/Packaging.md and the README are packaging_test.py's."""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import unittest

from support import BUILD, TEMPLATE, PackageTestCase, write

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = [document for document in sorted((ROOT / "Docs").glob("*.md")) if document.name != "Packaging.md"]
BLOCK = re.compile(r"(?<=\n\n)(?: {4}.*\n|\n(?= {4}))+", re.M)
# What a block of commands begins with; other blocks show files and screens.
COMMAND = re.compile(r"(?:\$ )?(?:zpkpack|script/\w|ctest|convert|python3|grep|msgfmt|\./\w)")
# What stands within a sentence, with options; variables may go before it.
INLINE = re.compile(r"(?<!`)`(?:[A-Z_]+=\S+ )*((?:zpkpack|script/[\w-]+|ctest)\s[^`]+)`(?!`)")


def blocks(document):
    """The blocks of commands of a document, without their indentation."""
    texts = (re.sub(r"^ {4}", "", block, flags=re.M).strip("\n") for block in BLOCK.findall(document.read_text()))
    return [text for text in texts if COMMAND.match(text)]


def forms():
    """Of each line, and of each place in a sentence, that shows how a command is called, the document's name and the
    command without a remark."""
    for document in DOCUMENTS:
        for block in blocks(document):
            for line in block.split("\n"):
                if COMMAND.match(line):
                    yield document.name, re.split(r"  +", line.removeprefix("$ "))[0]
    for document in [*DOCUMENTS, *(ROOT / name for name in ("README.md", "CONTRIBUTING.md", "Docs/Packaging.md"))]:
        for command in INLINE.findall(document.read_text()):
            yield document.name, " ".join(command.split())


class DocumentsTest(PackageTestCase):
    def follow(self, document, begin, **words):
        """Runs the block of the document that begins so, with what the reader has in the place of some words."""
        [block] = [block for block in blocks(ROOT / "Docs" / document) if block.startswith(begin)]
        for word, value in words.items():
            block = re.sub(rf"\b{word}\b", value, block)
        done = subprocess.run(
            ["sh", "-euc", re.sub(r"^\$ ", "", block.split("\n")[0]) if block.startswith("$ ") else block],
            cwd=self.folder,
            env=self.environment(PATH=f"{BUILD}:{os.environ['PATH']}"),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=300,
        )
        self.assertEqual(done.returncode, 0, (block, done.stderr))
        return done

    def source_named(self, name):
        self.simple_package()
        self.source.rename(self.folder / name)

    def test_what_building_says(self):
        self.source_named("Source")
        done = self.follow("Packages.md", "$ zpkpack build")
        [told] = [block for block in blocks(ROOT / "Docs/Packages.md") if block.startswith("$ zpkpack build")]
        self.assertEqual(re.sub(r"\d+", "N", done.stdout.strip()), re.sub(r"\d+", "N", told.split("\n", 1)[1]))

    def test_translators_programs(self):
        for code in ("de", "en"):
            shutil.copytree(ROOT / "Resources/UILang" / code, self.source / "UILang" / code)
        write(self.source / "UILang/Languages.xml",
              '<a FallBackCode="en"><Language Code="de"/><Language Code="en"/></a>')
        self.source_named("Source")
        self.follow("Localization.md", "zpkpack strings Source --export-po")
        self.assertTrue((self.folder / "Translations/de.po").is_file())

    def test_the_quiet_way(self):
        bundle = self.simple_package()
        done = self.follow("Terminal.md", "./NAME.app", NAME=bundle.stem)
        self.assertEqual(done.stderr, "")
        self.record()

    def test_versions_of_what_is_carried(self):
        bundle = self.simple_package()
        done = self.follow("Distribution.md", "grep", NAME=bundle.stem)
        self.assertIn("pkg:deb/debian/", done.stdout)
        self.assertIn("libdeflate", done.stdout)

    def test_colours_of_a_picture(self):
        bundle = self.simple_package()
        done = self.follow("Accessibility.md", "zpkpack preview", PACKAGE=bundle.name, FOLDER="Pictures")
        *colours, ratio = done.stdout.splitlines()
        self.assertIn("#EFEFEF", "".join(colours))
        self.assertIn(f"#308CC6 on #EFEFEF | {ratio} |", (ROOT / "Docs/Accessibility.md").read_text())

    def test_options_of_the_packager_are_in_its_help(self):
        told = [shlex.split(line.replace("|", " ").replace("[", " ").replace("]", " "))
                for _, line in forms() if line.startswith("zpkpack ")]
        self.assertGreater(len(told), 5)
        for _, *words in told:
            command = [word for word in words[:1] if not word.startswith("-")]
            help_text = subprocess.run([BUILD / "zpkpack", *command, "--help"], check=True, capture_output=True,
                                       text=True).stdout
            for word in words:
                if word.startswith("-"):
                    self.assertRegex(help_text, rf"(?<![\w-]){re.escape(word)}(?![\w-])", words)

    def test_scripts_are_there_with_their_options(self):
        told = [line.split() for _, line in forms() if line.startswith("script/")]
        self.assertGreater(len(told), 5)
        for script, *words in told:
            file = ROOT / script
            self.assertTrue(os.access(file, os.X_OK), script)
            for word in words:
                if word.startswith("--"):
                    # Python's own reader of command lines adds the help.
                    named = "argparse" if word == "--help" else word
                    self.assertTrue(named in file.read_text(), (script, word))

    @unittest.skipUnless((TEMPLATE / "Contents/Frameworks").is_dir(), "this build shares the machine's libraries")
    def test_names_of_tests_choose_some(self):
        told = [shlex.split(line) for _, line in forms() if line.startswith("ctest ")]
        self.assertGreater(len(told), 5)
        for words in told:
            chosen = words[words.index("release") + 1:]
            if chosen != ["-R", "NAME"]:
                listed = subprocess.run(["ctest", "--test-dir", BUILD, "-N", *chosen], check=True,
                                        capture_output=True, text=True).stdout
                self.assertNotIn("Total Tests: 0", listed, chosen)

    def test_no_command_is_left_out(self):
        """What is added gets a test above, or its options are looked up."""
        found = [(document.name, block) for document in DOCUMENTS for block in blocks(document)]
        run = {"Packages.md": "$ zpkpack build", "Localization.md": "zpkpack strings Source --export-po",
               "Terminal.md": "./NAME.app", "Distribution.md": "grep", "Accessibility.md": "zpkpack preview"}
        for document, begin in run.items():
            self.assertIn(document, [name for name, block in found if block.startswith(begin)])
        others = [block for name, block in found if not block.startswith(run.get(name, "\n"))]
        for line in (line for block in others for line in block.split("\n")):
            self.assertRegex(line, r"^(?:zpkpack|script/\w+|ctest) ")


if __name__ == "__main__":
    unittest.main()
