# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The texts of a source: what its languages lack, and their way to translators and back."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import unittest

from packager_case import CommandTestCase
from support import write

ROOT = pathlib.Path(__file__).resolve().parents[2]
SHIPPED = ROOT / "Resources/UILang"
KEYS = re.findall(r'"(ZPKString_\w+)"', (ROOT / "Common/ZPKCoreStringDefine.cpp").read_text())
TABLE = "ZPKStringTable.def"


class StringsTestCase(CommandTestCase):
    def setUp(self):
        super().setUp()
        self.languages = self.source / "UILang"
        shutil.copytree(SHIPPED, self.languages)
        self.codes = sorted(path.parent.name for path in self.languages.glob(f"*/{TABLE}"))

    def keep(self, *codes):
        """Leaves the other languages out, for tests that look at a few."""
        for code in set(self.codes) - set(codes):
            shutil.rmtree(self.languages / code)

    def strings(self, *arguments, **settings):
        return self.run_zpkpack("strings", "source", *arguments, **settings)

    def replace(self, path, old, new):
        text = path.read_text()
        self.assertEqual(text.count(old), 1, (path, old))
        write(path, text.replace(old, new))

    def table(self, code):
        return self.languages / code / TABLE

    def export(self):
        shutil.rmtree(self.folder / "po", ignore_errors=True)
        self.assertEqual(self.strings("--export-po", "po").stdout, b"po\n")
        return self.folder / "po"


class StringsListTest(StringsTestCase):
    def test_shipped_tables_lack_nothing(self):
        lines = self.strings().stdout.decode().split("\n\n")[0].splitlines()
        self.assertEqual(lines[0].split(), ["present", "missing", "unused", "same", "%s", "language"])
        self.assertEqual([line.split()[-1] for line in lines[1:]], self.codes)
        for line in lines[1:]:
            present, missing, unused, same, placeholders, code = line.split()
            self.assertEqual((present, missing, unused, placeholders), (str(len(KEYS)), "0", "0", "1"), line)
            self.assertEqual(same == "-", code == "en", line)

    def test_what_is_missing_unused_and_the_same_is_told_by_name(self):
        self.keep("en", "de")
        self.replace(self.table("de"), '"ZPKString_Error" = "Fehler";', '"Own" = "Eigenes";')
        self.replace(self.table("de"), "%s", "%s %s")
        write(self.languages / TABLE, '"ZPKString_Error" = "Oops";\n')
        write(self.languages / "de/ZPKPlatformStringTable.def", '"ZPKString_Services" = "Services";\n')
        # In the root table for all languages: nothing is missing.
        text = self.strings().stdout.decode()
        self.assertIn("     24        0       1     5   2  de\n", text)
        self.assertIn("\nde: unused Own\nde: same as in en ZPKString_OK\n", text)
        (self.languages / TABLE).unlink()
        text = self.strings().stdout.decode()
        self.assertIn("     23        1       1     5   2  de\n", text)
        self.assertIn("\n\nde: missing ZPKString_Error\nde: unused Own\n", text)
        report = json.loads(self.strings("--format", "json").stdout)
        self.assertEqual(report["reference"], "en")
        german, english = report["languages"]
        self.assertEqual(german["code"], "de")
        self.assertEqual(german["missing"], ["ZPKString_Error"])
        self.assertEqual(german["present"], [key for key in KEYS if key != "ZPKString_Error"])
        self.assertEqual(german["unused"], ["Own"])
        self.assertIn("ZPKString_Services", german["sameAsReference"])
        self.assertEqual((german["placeholders"], english["placeholders"]), (2, 1))
        self.assertEqual((english["present"], english["sameAsReference"]), (KEYS, []))

    def test_without_english_another_language_is_the_original(self):
        self.keep("ja", "de")
        self.replace(self.languages / "Languages.xml", 'FallBackCode="en"', 'FallBackCode="ja"')
        self.assertEqual(json.loads(self.strings("--format=json").stdout)["reference"], "ja")
        (self.languages / "Languages.xml").unlink()
        self.assertEqual(json.loads(self.strings("--format=json").stdout)["reference"], "de")

    def test_faults_of_a_table_are_told_and_count(self):
        self.keep("en", "de")
        self.replace(self.table("de"), '"ZPKString_OK" =', '"ZPKString_OK"')
        done = self.strings(status=1)
        self.assertIn(b"source/UILang/de/ZPKStringTable.def:3:", done.stderr)
        self.assertIn(b"de: missing ZPKString_OK\n", done.stdout)
        for way in ("--export-po", "--import-po"):
            self.assertIn(b"[table-syntax]", self.strings(way, "po", status=1).stderr)
            self.assertFalse((self.folder / "po").exists())

    def test_a_source_without_texts_is_refused(self):
        shutil.rmtree(self.languages)
        self.assertIn(b"source/UILang: the package has no texts of its own", self.strings(status=1).stderr)
        self.languages.mkdir()
        self.assertIn(b"source/UILang: there is no folder of a language in it", self.strings(status=1).stderr)

    def test_names_and_texts_cannot_command_a_terminal(self):
        self.keep("en")
        self.replace(self.table("en"), '"ZPKString_OK" =', '"\x1b[2Jx\u202e" =')
        (self.languages / "\x1b[31m").mkdir()
        for arguments in ((), ("--format", "json")):
            done = self.strings(*arguments)
            self.assertNotIn("\u202e".encode(), done.stdout)
        self.assertIn(b"no code of a language", self.strings("--export-po", "po", status=1).stderr)
        self.assertFalse((self.folder / "po").exists())


class TranslationTest(StringsTestCase):
    ODD = {
        "ZPKString_OK": 'q"u\\o\'te\\\\n',
        "ZPKString_Error": "$Data$ $ 100 % %d",
        "ZPKString_ERROR_CORRUPT": "\n\nedges\tand tabs\n",
        "ZPKString_ERROR_EXTRACT": "\u05d0\u05d1 \u202bRTL\u202c \u0661\u200f",
        "ZPKString_ERROR_INIT": "\U0001d11e \U0001f469\u200d\U0001f680 \U0010fffd",
        "ZPKString_UPDATE_FAILURE": "%s and %s",
        "ZPKString_DISCCHECK_TITLE": "\x01\x0b\x1b[31m\x7f",
        "ZPKString_DISCCHECK_START": "# msgid \"x\"",
    }

    @staticmethod
    def quoted(text):
        for plain, escaped in (("\\", "\\\\"), ('"', '\\"'), ("\n", "\\n"), ("\t", "\\t")):
            text = text.replace(plain, escaped)
        return f'"{text}"'

    def accepted(self, po):
        """The files that gettext's own tool takes, and how many messages of them count."""
        for path in sorted(po.glob("*.po")):
            done = subprocess.run(
                ["msgfmt", "-c", "-v", "-o", self.folder / f"{path.stem}.mo", path],
                capture_output=True,
                text=True,
                timeout=60,
                env={**os.environ, "LC_ALL": "C.UTF-8"},
            )
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertNotIn("warning", done.stderr)
            yield path, done.stderr

    def test_shipped_tables_go_out_and_come_back_the_same(self):
        po = self.export()
        self.assertEqual([path.stem for path, _ in self.accepted(po)], self.codes)
        before = self.tree(self.source)
        done = self.strings("--import-po", "po")
        self.assertEqual((done.stdout, done.stderr), (b"", b"zpkpack: every table says the same already\n"))
        self.assertEqual(self.tree(self.source), before)

    def test_all_translators_see_is_in_the_file(self):
        po = (self.export() / "de.po").read_text()
        self.assertIn('"Language: de\\n"\n', po)
        self.assertIn(
            '\n#. Names the button exactly as DISCCHECK_START does.\nmsgctxt "ZPKString_DISCCHECK_MESSAGE"\n'
            'msgid "Insert the installation disc',
            po,
        )
        self.assertEqual(re.findall(r'^msgctxt "(.*)"$', po, re.M), KEYS)
        # The one text with a place for something, and no other.
        self.assertEqual(re.findall(r'^#,.*\n(.*)$', po, re.M), ['msgctxt "ZPKString_UPDATE_FAILURE"'])

    def test_odd_texts_go_out_and_come_back_the_same(self):
        self.keep("en", "de", "ar")
        for code, keys in (("en", list(self.ODD)[::2]), ("de", self.ODD), ("ar", list(self.ODD)[1::2])):
            table = self.table(code)
            lines = table.read_text()
            for key in keys:
                lines = re.sub(
                    rf'^("{key}" = ).*;$', lambda found: found[1] + self.quoted(self.ODD[key]) + ";", lines, flags=re.M
                )
            write(table, lines)
        write(
            self.table("ar"),
            "\ufeff/* head */\r\n" + self.table("ar").read_text().replace('"ZPKString_OK" = "', 'ZPKString_OK=/* c */"', 1)
            + '"Own" = "unused";',
        )
        before = self.tree(self.source)
        for path, told in self.accepted(self.export()):
            # What the tool would refuse in a translation is not counted as one.
            self.assertEqual("fuzzy" in told, path.stem != "en", told)
        self.strings("--import-po", "po")
        self.assertEqual(self.tree(self.source), before)

    def test_a_changed_text_changes_its_line_alone(self):
        po = self.export()
        for code, text in (("de", "Na gut"), ("ar", 'x"\\\n\u202b\U0001d11e $')):
            self.replace(
                po / f"{code}.po",
                'msgid "OK"\nmsgstr ' + self.quoted({"de": "OK", "ar": "موافق"}[code]),
                'msgid "OK"\nmsgstr ' + self.quoted(text),
            )
        before = {code: self.table(code).read_text().splitlines(keepends=True) for code in self.codes}
        kept = self.table("de").stat().st_mode
        os.chmod(self.table("ar"), 0o640)
        done = self.strings("--import-po", "po")
        self.assertEqual(
            done.stdout, b"".join(f"source/UILang/{code}/{TABLE}\n".encode() for code in ("ar", "de"))
        )
        self.assertEqual(self.table("de").stat().st_mode, kept)
        self.assertEqual(self.table("ar").stat().st_mode & 0o777, 0o640)
        for code in self.codes:
            after = self.table(code).read_text().splitlines(keepends=True)
            changed = [(old, new) for old, new in zip(before[code], after, strict=True) if old != new]
            self.assertEqual(len(changed), code in ("de", "ar"), changed)
        self.assertIn('"ZPKString_OK" = "Na gut";\n', self.table("de").read_text())
        # What was taken in comes out again.
        again = self.export()
        self.assertIn(self.quoted("Na gut"), (again / "de.po").read_text())
        list(self.accepted(again))

    def test_what_was_missing_comes_in_behind_the_rest(self):
        self.keep("en", "de")
        self.replace(self.table("de"), '"ZPKString_Error" = "Fehler";\n', "")
        po = self.export()
        (told,) = [told for path, told in self.accepted(po) if path.stem == "de"]
        self.assertIn("2 untranslated", told)
        before = self.table("de").read_text()
        self.replace(po / "de.po", 'msgid "Error"\nmsgstr ""', 'msgid "Error"\nmsgstr "Fehler"')
        self.strings("--import-po", "po")
        self.assertEqual(self.table("de").read_text(), before + '"ZPKString_Error" = "Fehler";\n')

    def test_texts_go_where_the_launcher_finds_them(self):
        self.keep("en", "de")
        platform = write(self.languages / "de/ZPKPlatformStringTable.def", '"ZPKString_OK" = "Gut";\n')
        os.remove(self.table("de"))
        write(self.languages / TABLE, '"ZPKString_Error" = "Oops";\n')
        po = self.export()
        self.replace(po / "de.po", 'msgstr "Gut"', 'msgstr "Besser"')
        self.replace(po / "de.po", 'msgid "Error"\nmsgstr ""', 'msgid "Error"\nmsgstr "Fehler"')
        self.strings("--import-po", "po")
        self.assertEqual(platform.read_text(), '"ZPKString_OK" = "Besser";\n')
        self.assertEqual(self.table("de").read_text(), '"ZPKString_Error" = "Fehler";\n')
        self.assertEqual((self.languages / TABLE).read_text(), '"ZPKString_Error" = "Oops";\n')

    def test_a_fuzzy_translation_changes_nothing(self):
        po = self.export()
        self.replace(po / "de.po", 'msgctxt "ZPKString_OK"', '#, fuzzy\nmsgctxt "ZPKString_OK"')
        self.replace(po / "de.po", 'msgid "OK"\nmsgstr "OK"', 'msgid "OK"\nmsgstr "?"')
        before = self.tree(self.source)
        self.strings("--import-po", "po")
        self.assertEqual(self.tree(self.source), before)

    def refused(self, po, expected):
        before = self.tree(self.source)
        done = self.strings("--import-po", po, status=1)
        self.assertEqual(done.stdout, b"")
        self.assertIn(expected, done.stderr.decode())
        self.assertEqual(self.tree(self.source), before)

    def test_nothing_is_taken_when_one_file_is_wrong(self):
        self.keep("en", "de", "ar")
        original = (self.export() / "de.po").read_bytes()
        # The first file has something to take in all the time.
        self.replace(self.folder / "po/ar.po", 'msgid "OK"\nmsgstr "', 'msgid "OK"\nmsgstr "x')
        ok = b'msgctxt "ZPKString_OK"\nmsgid "OK"\nmsgstr "OK"\n'
        line = original.decode().splitlines().index('msgctxt "ZPKString_OK"') + 1
        rows = [
            (original.decode().encode("utf-16"), "po/de.po:1: the bytes from here on are no UTF-8"),
            (original.replace(b"charset=UTF-8", b"charset=latin1"), "po/de.po:1: the charset"),
            (original.replace(b"Language: de", b"Language: ar"), 'po/de.po:1: the language of the header is "ar"'),
            (original.replace(ok, b""), 'there is no message for "ZPKString_OK"'),
            (original.replace(b"ZPKString_OK", b"ZPKString_Ok"),
             f'po/de.po:{line}: nothing asks for the key "ZPKString_Ok"; "ZPKString_OK" is known'),
            (original + ok, f'"ZPKString_OK" is in line {line}, too'),
            (original.replace(b'msgid "OK"', b'msgid "Fine"'), f"po/de.po:{line}: msgid is not what the table of en"),
            (original.replace(ok, ok[:-2] + b'\\q"\n'), f"po/de.po:{line + 2}: there is no such escape"),
            (original.replace(ok, ok[:-2] + b'\\033"\n'), f"po/de.po:{line}: a control character"),
            (original.replace(ok, ok[:-2] + b'\\r"\n'), f"po/de.po:{line}: a control character"),
            (original.replace(ok, ok[:-2] + b'\\000"\n'), f"po/de.po:{line + 2}: the number"),
            (original.replace(ok, ok[:-2] + b'\0"\n'), f"po/de.po:{line + 2}: there is a null character"),
            (re.sub(rb'(msgstr ""\n(?:".*\n)*)"%s\\n"', rb"\1", original), '"%s" must be in this text once'),
            (original[: len(original) // 2], "po/de.po:"),
            (b"", "po/de.po:1: there is no header"),
            (b"#" * (17 << 20), "po/de.po:1: File too large"),
        ]
        for number, (contents, expected) in enumerate(rows):
            with self.subTest(number=number, expected=expected):
                write(self.folder / "po/de.po", contents)
                self.refused("po", expected)

    def test_what_is_no_translation_is_refused(self):
        self.keep("en", "de")
        self.refused("nowhere", "nowhere: No such file or directory")
        (self.folder / "empty").mkdir()
        self.refused("empty", "empty: there is no PO file in it")
        po = self.export()
        os.rename(po / "de.po", po / "fr.po")
        self.refused("po", "po/fr.po:1: source/UILang has no language fr")
        os.remove(po / "fr.po")
        os.mkfifo(po / "de.po")
        self.refused("po", "po/de.po:1: ")

    def test_another_language_is_not_changed_through_a_link(self):
        self.keep("en", "de")
        os.symlink("de", self.languages / "de_AT")
        po = self.export()
        self.strings("--import-po", "po")
        self.replace(po / "de_AT.po", 'msgid "OK"\nmsgstr "OK"', 'msgid "OK"\nmsgstr "Passt"')
        self.refused("po", "source/UILang/de_AT: it is a link, and belongs to another language")

    def test_a_table_that_swallows_what_is_added_stays(self):
        self.keep("en", "de")
        self.replace(self.table("de"), '"ZPKString_Error" = "Fehler";\n', "")
        with open(self.table("de"), "a") as table:
            table.write("/* open to the end")
        po = self.export()
        self.replace(po / "de.po", 'msgid "Error"\nmsgstr ""', 'msgid "Error"\nmsgstr "Fehler"')
        self.refused("po", 'the text of "ZPKString_Error" cannot be put into it')

    def test_a_folder_that_is_there_is_not_touched(self):
        (self.folder / "po").mkdir()
        self.assertIn(b"po exists\n", self.strings("--export-po", "po", status=1).stderr)
        self.assertEqual(os.listdir(self.folder / "po"), [])

    def test_ways_exclude_each_other(self):
        for arguments in (("--export-po", "a", "--import-po", "b"), ("--export-po", "a", "--format", "json")):
            self.assertIn(b"excludes", self.strings(*arguments, status=2).stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
