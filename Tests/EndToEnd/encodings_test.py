# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Descriptions in encodings of before Unicode: the launcher reads them by itself, alike on every machine."""

import gzip
import re
import subprocess
import unittest

from support import BUILD, PackageTestCase, odc_archive, write

# Encoding as a description names it, Python's codec, a product's name. The second bytes of the Japanese and the
# Chinese name are a backslash, and letters.
NAMES = (
    ("Shift_JIS", "shift_jis", "表計算ソフト能力 ﾊﾟｯｸ"),
    ("windows-31J", "cp932", "髙橋①～"),
    ("EUC-JP", "euc_jp", "日本語版 丂ｱ"),
    ("EUC-KR", "euc_kr", "한글 韓國"),
    ("ks_c_5601-1987", "euc_kr", "문서 작성기"),
    ("windows-949", "cp949", "똠방각하"),
    ("Big5", "cp950", "功能套件 許蓋"),
    ("GB2312", "gb2312", "办公软件"),
    ("GBK", "gbk", "辦公軟體"),
    ("GB18030", "gb18030", "㐀办公𠀀"),
    ("ISO-8859-1", "latin-1", "Bürocenter"),
    ("ISO-8859-2", "iso8859-2", "Příkaz"),
    ("ISO-8859-15", "iso8859-15", "Œuvre €"),
    ("windows-1250", "cp1250", "Łódź"),
    ("windows-1251", "cp1251", "Редактор"),
    ("windows-1252", "cp1252", "“Œuvre” €"),
    ("windows-1253", "cp1253", "Έκδοση"),
    ("windows-1254", "cp1254", "Çalışma"),
    ("KOI8-R", "koi8-r", "Таблица"),
    ("KOI8-U", "koi8-u", "Їжак"),
    ("IBM866", "cp866", "Книга"),
    ("TIS-620", "iso8859-11", "ภาษาไทย"),
    ("UTF-16", "utf-16", "統合 𠀀"),
    ("UTF-8", "utf-8", "統合 𠀀"),
)
CONDITIONS = (
    '<?xml version="1.0" encoding="%s"?>\n<UpdateInfo><Conditions><UIMLog Signature="none"/></Conditions>'
    '<TargetItems><ItemInfo DisplayName="%s"/></TargetItems></UpdateInfo>\n'
)


class DescriptionEncodingsTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()
        self.conditions = self.source / "Info/Condition.xml"

    @staticmethod
    def describe(package, conditions):
        """Gives the package other conditions, whatever the packager would say of them."""
        members = [("Info", 0o40755, b""), ("Info/Condition.xml", 0o100644, conditions)]
        (package / "Contents/Resources/Info.datx").write_bytes(gzip.compress(odc_archive(members)))

    def launched(self, package):
        """What is told, and the files that the launcher itself opens."""
        trace = self.folder / "trace"
        command = ["strace", "-qq", "-f", "-z", "-o", trace, "-e", "trace=open,openat,openat2,execve"]
        done = subprocess.run([*command, package / "Contents/Linux/Zephyrkit"], env=self.environment(),
                              stdin=subprocess.DEVNULL, capture_output=True, cwd=self.folder, timeout=60)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assert_nothing_left()
        return done.stderr.decode(), re.findall(r'"([^"]*)"', trace.read_text())

    def test_name_reaches_the_person_and_no_file_of_the_machine_is_asked(self):
        package = self.pack()
        for encoding, codec, name in NAMES:
            with self.subTest(encoding):
                self.describe(package, (CONDITIONS % (encoding, name)).encode(codec))
                told, opened = self.launched(package)
                self.assertIn("\n  %s\n" % name, told)
                self.assertIn(str(self.folder / "TestSetup.app/Contents/Linux/Zephyrkit"), opened)
                foreign = [path for path in opened if re.search(r"gconv|charset|\.so\b|locale", path)]
                self.assertEqual(foreign, [])
        self.assertEqual(self.records(), [])

    def test_start_description_finds_its_program(self):
        for encoding, codec, program in (("Shift_JIS", "shift_jis", "表示ソ"), ("GB18030", "gb18030", "办公𠀀")):
            with self.subTest(encoding):
                self.recorder(program)
                startup = f'<?xml version="1.0" encoding="{encoding}"?><Startup Exec="$Data$/{program}" Param="能"/>'
                write(self.source / "Info/Startup.xml", startup.encode(codec))
                self.record_path.unlink(missing_ok=True)
                self.launch(self.pack("TestSetup.app", "--force"))
                self.assertTrue(self.record()["program"].endswith("/Data/" + program))
                self.assertEqual(self.record()["arguments"], ["能"])

    def test_wrong_declaration_is_a_failed_load(self):
        """Such conditions are not met, and no product can be named."""
        package = self.pack()
        shift_jis = CONDITIONS % ("Shift_JIS", "表計算")
        for what, contents in {
            "UTF-8": shift_jis.encode(),
            "EUC-JP": (CONDITIONS % ("Shift_JIS", "凜")).encode("euc_jp"),
            "cut within a character": shift_jis.encode("shift_jis") + "表".encode("shift_jis")[:1],
            "first half of a character before a quotation mark": shift_jis.encode("shift_jis").replace(b'\x8e\x5a"', b'\x8e"'),
            "Shift_JIS that claims to be UTF-8": (CONDITIONS % ("UTF-8", "表")).encode("shift_jis"),
            "Shift_JIS that claims to be EUC-KR": (CONDITIONS % ("EUC-KR", "表ソ")).encode("shift_jis"),
            "unknown": (CONDITIONS % ("x-none", "a")).encode(),
            "stateful": (CONDITIONS % ("ISO-2022-JP", "表")).encode("iso2022_jp"),
        }.items():
            with self.subTest(what):
                write(self.conditions, contents)
                check = subprocess.run([BUILD / "zpkpack", "check", self.source], capture_output=True, text=True)
                self.assertRegex(check.stdout, r"Condition\.xml:\d+:\d+: error: .* \[xml-(encoding|syntax)\]\n")
                self.describe(package, contents)
                told, _ = self.launched(package)
                self.assertNotIn("\n  ", told)
                self.assertIn("UPDATE_FAILURE", told)
        self.assertEqual(self.records(), [])

    def test_check_takes_what_the_launcher_takes(self):
        for encoding, codec, name in NAMES:
            with self.subTest(encoding):
                write(self.conditions, (CONDITIONS % (encoding, name)).encode(codec))
                done = subprocess.run([BUILD / "zpkpack", "check", self.source], capture_output=True, text=True)
                self.assertNotIn("Condition.xml", done.stdout)


if __name__ == "__main__":
    unittest.main(verbosity=2)
