# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What `zpkpack check` says of the many forms that one fault has: place and words, as a vendor reads them."""

import os
import plistlib
import re
import shutil
import signal
import subprocess
import unittest

import elf
from check_test import CONDITION, CheckTestCase, MadePackageTestCase
from support import BUILD, wait_until

LINE = re.compile(r"(.*?):(\d+:\d+): (?:error|warning): (.*) \[([a-z-]+)\]")
MANIFEST = "Contents/Resources/Manifest.sha256"


class WordsTestCase(CheckTestCase):
    def found(self):
        """(path in the source, place, text, check) of each finding."""
        rows = [LINE.fullmatch(line).groups() for line in self.check().stdout.splitlines()]
        return [(path.removeprefix("source/"), *rest) for path, *rest in rows]

    def assert_said(self, check, path, *expected):
        """All that the check says: places and texts."""
        self.assertEqual([row[1:3] for row in self.found() if row[0] == path and row[3] == check], list(expected))


def check_with_calls(folder, package, *options, **settings):
    """The check under strace, which answers calls as the options say."""
    return subprocess.Popen(["strace", "-qq", "-o", folder / "calls", *options, BUILD / "zpkpack", "check", package],
                            cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                            text=True, **settings)


class DescriptionWordsTest(WordsTestCase):
    def test_what_is_not_well_formed(self):
        rows = [
            ("<UpdateInfo", "1:1", "unclosed token"),
            ("<UpdateInfo>\n", "2:1", "no element found"),
            ("<a>\r\n<b>\r</a>", "3:3", "mismatched tag"),
            ("<a/>\n<b/>", "2:1", "junk after document element"),
            ("<a x='1'\n  x='2'/>", "2:3", "duplicate attribute"),
            ("<a x=1/>", "1:6", "not well-formed (invalid token)"),
            ("<ä ö='ü'>&</ä>", "1:11", "not well-formed (invalid token)"),
            ("<a>\n\t&none;</a>", "2:2", "undefined entity"),
            ("\n<?xml version='1.0'?><a/>", "2:1", "XML or text declaration not at start of entity"),
            ("<!DOCTYPE a [<!ENTITY b '&b;'>]><a>&b;</a>", "1:36", "recursive entity reference"),
            (b"<a>\xff</a>", "1:4", "not well-formed (invalid token)"),
            ("<a></b>".encode("utf-16"), None, "mismatched tag"),
        ]
        for text, place, reason in rows:
            with self.subTest(text):
                self.write("Info/Condition.xml", text)
                said = [row for row in self.found() if row[3] == "xml-syntax"]
                self.assertEqual([row[2] for row in said], ["the launcher cannot read this: " + reason])
                if place:
                    self.assertEqual(said[0][:2], ("Info/Condition.xml", place))

    def test_wrong_capitals_are_told_from_right_ones(self):
        path = "Info/Condition.xml"
        whole = ('<UpdateInfo XmlVersion="1">\n<Conditions>\n<Registry KeyName="a"/>\n<UIMLog Signature="a"/>\n'
                 '<UninstallXml AppName="a"/>\n<Disc FilePath="a"/>\n</Conditions>\n<TargetItems>\n'
                 '<ItemInfo DisplayName="a"/>\n</TargetItems>\n</UpdateInfo>\n')
        elements = ["Conditions", "Registry", "UIMLog", "UninstallXml", "Disc", "TargetItems", "ItemInfo"]
        attributes = ["XmlVersion", "KeyName", "Signature", "AppName", "FilePath", "DisplayName"]
        for name in elements + attributes:
            for wrong in (name.lower(), name.upper()):
                with self.subTest(wrong):
                    self.write(path, re.sub(rf"\b{name}\b", wrong, whole))
                    kind = "element" if name in elements else "attribute"
                    said = [row for row in self.found() if row[3] == "unknown-" + kind]
                    line = re.sub(rf"\b{name}\b", wrong, whole)[: re.search(rf"\b{name}\b", whole).start()].count("\n") + 1
                    self.assertEqual([row[0] for row in said], [path])
                    self.assertRegex(said[0][1], rf"\A{line}:")
                    self.assertRegex(said[0][2], rf'\Athe launcher knows no {kind} "{wrong}" (in|of) "\w+"; "{name}" is known\Z')

    def test_conditions_that_are_never_met(self):
        never = "it holds no condition that can be met, so the package installs nowhere"
        registry = "Registry conditions are never met, and no other here can be, so the package installs nowhere"
        rows = [
            ("", "1:1", 'it holds no "Conditions", so the package installs nowhere'),
            ("<Conditions/>", "1:13", never),
            ("<Conditions><!-- <UIMLog Signature='a'/> --></Conditions>", "1:13", never),
            ("<Conditions><UIMLog/></Conditions>", "1:13", never),
            ("<Conditions><UimLog Signature='a'/></Conditions>", "1:13", never),
            ("<Conditions><Registry KeyName='a'/></Conditions>", "1:13", registry),
            ("<Conditions><UIMLog Signature='a'/></Conditions>\n<Conditions/>", "2:1", never),
            ("<Conditions><Registry/><UninstallXml AppName='a'/></Conditions>", None, None),
            ("<Conditions><Disc FilePath='a'/></Conditions>", None, None),
            ("<Conditions/><Conditions><UIMLog Signature='a'/></Conditions>", None, None),
        ]
        for text, place, reason in rows:
            with self.subTest(text):
                self.write("Info/Condition.xml", f"<UpdateInfo>{text}</UpdateInfo>")
                self.assert_said("condition-never", "Info/Condition.xml", *([(place, reason)] if place else []))

    def test_products_without_a_name(self):
        self.condition("<ItemInfo", '<ItemInfo Other="a"/>\n<ItemInfo DisplayName="  &#9;"/>\n<ItemInfo')
        self.assert_said("display-name", "Info/Condition.xml", ("7:5", "this product has no name to show"),
                         ("8:11", "this product has no name to show"))

    def test_each_startup_fault_is_told_at_its_attribute(self):
        start = "<Startup Other='$Data$/x'\n         Param='%s'\n         Exec='%s'/>"
        self.write("Data/sub/tool", "#!/bin/sh\n", 0o755)
        (self.source / "Data/None.app").mkdir()
        rows = [
            ("$Data$/sub/none", "exec-missing", '"$Data$/sub/none" is not there'),
            ("$Data$/sub", "exec-not-executable", '"$Data$/sub" is no file that may be executed'),
            ("$Data$/None.app", "exec-bundle",
             '"$Data$/None.app" is no bundle with a main program; the launcher runs "setup" instead'),
            ("sub/tool", "exec-outside", '"sub/tool" is not in Data, so it is not in the package; "$Data$/sub/tool" is'),
            ("../Data/setup", "exec-outside", '"../Data/setup" is not in Data, so it is not in the package'),
            ("$Data$/../setup", "exec-outside", '"$Data$/../setup" is not in Data, so it is not in the package'),
        ]
        for exec_, check, text in rows:
            with self.subTest(exec_):
                self.write("Info/Startup.xml", start % ("a", exec_))
                self.assert_said(check, "Info/Startup.xml", ("3:10", text))
        for param, is_said in (("-a -b", True), ("-a&#9;-b", True), ("-a&#10;-b", True), ("--file=a", False), ("", False)):
            self.write("Info/Startup.xml", start % (param, "$Data$/setup"))
            self.assertEqual([row[1] for row in self.found() if row[3] == "param-words"], ["2:10"] * is_said, param)

    def test_encodings(self):
        path = "Info/Condition.xml"
        declaration = b'<?xml version="1.0" encoding="%s"?>\n'
        self.write(path, declaration % b"Shift_JIS" + b"<a>\x83\x00</a>")
        self.assert_said("xml-encoding", path, ("2:4", "the bytes from here on are not in the encoding that it names"))
        self.write(path, declaration % b"x-none" + b"<a/>")
        self.assert_said("xml-encoding", path, ("1:31", "the launcher cannot read this: unknown encoding"))
        self.write(path, declaration % b"Shift_JIS" + CONDITION.replace("Suite 3", "一").encode("shift_jis"))
        self.assertEqual(self.found(), [])

    def test_what_is_no_file(self):
        for path in ("Info/Condition.xml", "UILang/Languages.xml", "UILang/ja/ZPKStringTable.def"):
            (self.source / path).unlink()
            os.mkfifo(self.source / path)
            self.assert_said("unreadable", path, ("1:1", "it cannot be read: Not a regular file"))

    def test_without_a_program_at_the_top(self):
        text = "no program is named, and none that may be executed is at the top of Data"
        (self.source / "Data/setup").chmod(0o644)
        self.write("Data/sub/tool", "#!/bin/sh\n", 0o755)
        for startup, place in (("<Startup/>", "1:1"), ("<Startup Param='a'\n Exec=''/>", "2:2")):
            self.write("Info/Startup.xml", startup)
            self.assert_said("no-program", "Info/Startup.xml", (place, text))


    def test_no_source(self):
        self.assertEqual(self.check("none").stdout,
                         "none:1:1: error: there is no such folder: the package source [missing-part]\n")


class LanguageWordsTest(WordsTestCase):
    LIST = "UILang/Languages.xml"

    def test_codes_that_are_meant(self):
        rows = [("de-AT", "de_AT"), ("DE", "de"), ("pt_br", "pt_BR"), ("Zh-tw", "zh_TW"), ("x", None), ("zh-Hans", None),
                ("C", None), ("de_", None), ("sr@latin", None), ("de_AT_1", None)]
        for code, meant in rows:
            (self.source / "UILang" / code).mkdir()
            self.languages(f'<Language Code="en"/><Language Code="ja"/>\n<Language Code="{code}"/>')
            text = f'no setting asks for "{code}"' + (f'; they ask for "{meant}"' if meant else "")
            self.assert_said("language-never-asked", self.LIST, ("2:1", text))
            (self.source / "UILang" / code).rmdir()
        for code in ("fil", "es_419", "sr_RS"):
            self.languages(f'<Language Code="en"/><Language Code="ja"/>\n<Language Code="{code}"/>')
            self.assert_said("language-never-asked", self.LIST)

    def test_lists_that_the_launcher_cannot_use(self):
        rows = [
            ("<Languages FallBackCode='en'/>", "it offers no language"),
            ("<Languages FallBackCode='en'> </Languages>", "it offers no language"),
            ("<Languages><Language Code='en'/></Languages>", "the root has no FallBackCode"),
            ("<Languages FallBackCode='en'><Language/></Languages>", "this element has no Code"),
        ]
        for text, reason in rows:
            self.write(self.LIST, text)
            place = "1:30" if "this" in reason else "1:1"
            self.assert_said("languages", self.LIST, (place, reason + ", so the launcher cannot use the list"))

    def test_the_fall_back_is_told_at_its_attribute(self):
        self.write(self.LIST, '<Languages\n  FallBackCode="de">\n<Language Code="en"/><Language Code="ja"/></Languages>')
        self.assert_said("fallback-without-folder", self.LIST, ("2:3", 'there is no folder "de"'))


    def test_no_list(self):
        (self.source / self.LIST).unlink()
        self.assert_said("languages", self.LIST, ("1:1", "there is no list of the languages that are offered"))


class TableWordsTest(WordsTestCase):
    TABLE = "UILang/ja/ZPKStringTable.def"

    def test_syntax_in_the_words_of_the_launcher(self):
        rows = [
            ('"a" = "b"', [("1:9", "Syntax error.")]),
            ('"a";', [("1:4", "Syntax error.")]),
            ('"a" = "b" = "c";', [("1:11", "Syntax error."), ("1:16", "Syntax error.")]),
            ('\r\n\r"a" = "\\x";', [("3:9", "Not supported escape sequence charactor.")]),
            ('"ä" = "ö" / "ü";', [("1:12", "Syntax error.")]),
            ('"a" = "b;\n', [("1:10", "Syntax error.")]),
        ]
        for text, expected in rows:
            with self.subTest(text):
                self.write(self.TABLE, text.encode())
                self.assert_said("table-syntax", self.TABLE, *expected)

    def test_a_table_whose_disk_fails(self):
        # It is read as a whole; then the launcher's own parser opens it once more.
        rows = [("read", 1, "it cannot be read: Input/output error"), ("openat", 2, "it cannot be read to its end")]
        for call, number, text in rows:
            process = check_with_calls(self.folder, "source", "-P", f"source/{self.TABLE}", "-e", f"trace={call}",
                                       "-e", f"inject={call}:error=EIO:when={number}")
            said, _ = process.communicate(timeout=60)
            self.assertIn(f"source/{self.TABLE}:1:1: error: {text} [unreadable]\n", said)

    def test_placeholder_once(self):
        key = "ZPKString_UPDATE_FAILURE"
        for value, count in (("a", 0), ("%s", None), ("a%s%s", 2), ("%s %d %s %s", 3), ("%S", 0)):
            self.write(self.TABLE, f'\n"{key}" = "{value}";')
            text = f'"%s" is in the text of "{key}" {count} times, and must be there once'
            self.assert_said("placeholder", self.TABLE, *([] if count is None else [("2:1", text)]))

    def test_the_button_by_its_own_name(self):
        message, button = "ZPKString_DISCCHECK_MESSAGE", "ZPKString_DISCCHECK_START"
        for quoted, is_said in (("“Find”", False), ("「Find」", False), ("«\u00a0Find\u00a0»", False), ("“find”", True),
                                ("“Search”", True), ("“Find again”", True), ("Find", False)):
            self.write(self.TABLE, f'"{button}" = "Find";\n"{message}" = "Insert it and choose {quoted}.";')
            text = f'"{message}" does not quote the button "Find"'
            self.assert_said("button-name", self.TABLE, *([("2:1", text)] if is_said else []))

    def test_dollars_and_doubled_keys(self):
        self.write(self.TABLE, '"ZPKString_OK" = "1 $";\n\n"ZPKString_OK" = "b";\n  "ZPKString_OK" = "c";')
        self.assert_said("dollar", self.TABLE, ("1:1", 'the text of "ZPKString_OK" holds a "$"'))
        self.assert_said("key-doubled", self.TABLE, ("3:1", '"ZPKString_OK" is in line 1, too'),
                         ("4:3", '"ZPKString_OK" is in line 1, too'))


class LanguageNamesWordsTest(WordsTestCase):
    """What a language calls the package."""

    NAMES = "UILang/ja/InfoPlist.strings"
    KEY = "CFBundleDisplayName"

    def names(self, contents):
        self.write(self.NAMES, contents if isinstance(contents, bytes) else contents.encode())
        return [row[1:] for row in self.found()]

    def test_names_that_the_launcher_takes(self):
        text = f'/* ハロー */\n"{self.KEY}" = "ハロー";\n'
        xml = f'<plist version="1.0"><dict><key>{self.KEY}</key><string>ハロー</string></dict></plist>'
        binary = plistlib.dumps({self.KEY: "ハロー"}, fmt=plistlib.FMT_BINARY)
        longest = f'"{self.KEY}" = "{"ハ" * 100}";'
        for contents in (text, text.encode("utf-8-sig"), text.encode("utf-16"), "", xml, binary, longest):
            with self.subTest(contents):
                self.assertEqual(self.names(contents), [])

    def test_names_of_no_use(self):
        rows = [
            (f'"{self.KEY}" = "";', "1:1", "is empty"),
            (f'\n  {self.KEY} = "a\\n";', "2:3", "holds a control character"),
            (f'"{self.KEY}" = "a\x7f";', "1:1", "holds a control character"),
            (f'"{self.KEY}" = "{"ハ" * 101}";', "1:1", "is longer than 100 characters"),
            (f'"{self.KEY}" = ("a");', "1:1", "is no text"),
        ]
        for contents, place, fault in rows:
            with self.subTest(contents):
                self.assertEqual(self.names(contents), [(place, f'"{self.KEY}" {fault}', "package-title")])
        binary = plistlib.dumps({self.KEY: ""}, fmt=plistlib.FMT_BINARY)
        self.assertEqual(self.names(binary), [("1:1", f'"{self.KEY}" is empty', "package-title")])

    def test_syntax_and_encoding(self):
        said = '"key" = "value"; is expected from here on'
        for contents, place in ((f'"{self.KEY}" = "a"', "1:28"), ("a = b;\n\"ü\" c;", "2:5"), ("<plist>", "1:1"),
                                ("# none\n", "1:1")):
            with self.subTest(contents):
                self.assertEqual(self.names(contents), [(place, said, "table-syntax")])
        said = "the bytes from here on are no UTF-8"
        for contents, place in ((f'\n"{self.KEY}" = "h\xe9";'.encode("latin-1"), "2:27"), (b"\xff\xfea", "1:1")):
            self.assertEqual(self.names(contents), [(place, said, "table-encoding")])

    def test_keys(self):
        advice = f'; "{self.KEY}" is what a language may say'
        self.assertEqual(
            self.names(f'"CFBundleName" = "a";\n"{self.KEY}" = "b"; x = {{ y = z; }};\n"{self.KEY}" = "c";'),
            [("1:1", 'nothing asks for the key "CFBundleName"' + advice, "key-unknown"),
             ("2:30", 'nothing asks for the key "x"' + advice, "key-unknown"),
             ("3:1", f'"{self.KEY}" is in line 2, too', "key-doubled")])
        xml = "<plist><dict><key>b</key><true/><key>a</key><true/></dict></plist>"
        self.assertEqual([row[1] for row in self.names(xml)],
                         [f'nothing asks for the key "{key}"{advice}' for key in "ab"])

    def test_of_a_made_package(self):
        self.names(f'"{self.KEY}" = "a\\tb";')
        self.allow("package-title")
        subprocess.run([BUILD / "zpkpack", "build", "source", "-o", "Hello.app", "--without-windows"], check=True,
                       cwd=self.folder, capture_output=True, timeout=60)
        self.assertEqual(self.check("Hello.app").stdout,
                         f"Hello.app/Contents/Resources/{self.NAMES}:1:1: error: \"{self.KEY}\" holds a control"
                         " character [package-title]\n")


class PayloadWordsTest(WordsTestCase):
    def test_scripts(self):
        rows = [
            ("#!\n", "script-without-interpreter", "no interpreter is named behind #!"),
            ("#!/usr/bin/perl -w\n", "program-loader",
             "the setup program asks for /usr/bin/perl, which a plain machine has not"),
            ("", "script-without-interpreter", "the setup program is no machine code, and does not begin with #!"),
        ]
        for text, check, reason in rows:
            self.write("Data/setup", text)
            self.assert_said(check, "Data/setup", ("1:1", reason))

    def test_kinds_that_cannot_be_packed(self):
        os.mkfifo(self.source / "Data/fifo")
        os.mkfifo(self.source / "Info/Startup.fifo")
        self.assert_said("special-file", "Data/fifo", ("1:1", "a FIFO cannot be packed"))
        self.assert_said("special-file", "Info/Startup.fifo", ("1:1", "a FIFO cannot be packed"))

    def test_processors(self):
        for machine, name in ((3, "x86"), (40, "ARM"), (elf.AARCH64, "AArch64"), (243, "RISC-V"), (8, "another processor")):
            self.write("Data/setup", elf.machine_program(machine))
            self.assert_said("program-processor", "Data/setup", (
                "1:1", f"the setup program is for {name} (64 bits), the launcher for x86-64 (64 bits)"))

    def test_damaged_headers(self):
        self.write("Data/setup", b"\x7fELF" + bytes(60))
        self.assert_said("unreadable", "Data/setup", ("1:1", "its headers are damaged"))

    def test_libraries_beside_the_program(self):
        text = "the setup program needs libown.so, which a plain machine has not and Data does not bring"
        self.write("Data/lib/libown.so", "")
        for path, is_said in (("$ORIGIN/lib", False), ("${ORIGIN}/lib", False), ("$ORIGIN", True), ("/lib", True)):
            with self.subTest(path):
                self.write("Data/setup", elf.machine_program(libraries=["libown.so"], run_path=path))
                self.assert_said("program-library", "Data/setup", *([("1:1", text)] if is_said else []))

    def test_a_folder_that_is_moved_meanwhile(self):
        # Folders so far down are opened anew on the way back.
        above = self.source / "Data/sub" / "/".join("a" * 33)
        deep = above / "a/a/a"
        deep.mkdir(parents=True)
        (deep / "link").symlink_to("nothing")
        process = check_with_calls(self.folder, "source", "-e", "trace=readlinkat",
                                   "-e", "inject=readlinkat:signal=STOP:when=1", start_new_session=True)
        calls = self.folder / "calls"
        try:
            wait_until(lambda: process.poll() is not None or calls.exists() and "stopped by" in calls.read_text(), 60)
            self.assertIsNone(process.poll(), "nothing stood still")
            (above / "a").rename(self.folder / "elsewhere")
            os.killpg(process.pid, signal.SIGCONT)
            said, _ = process.communicate(timeout=60)
        finally:
            process.kill()
        self.assertIn(f"{above.relative_to(self.folder)}:1:1: error: it was moved while it was looked at [unreadable]\n", said)

    def test_devices(self):
        try:
            os.mknod(self.source / "Data/null", 0o020666, os.makedev(1, 3))
            os.mknod(self.source / "Data/disk", 0o060666, os.makedev(7, 200))
        except PermissionError:
            self.skipTest("making a device takes root")
        for name in ("null", "disk"):
            self.assert_said("special-file", f"Data/{name}", ("1:1", "a device cannot be packed"))

    def test_what_nobody_may_read(self):
        self.write("Data/closed", "", 0)
        (self.source / "Data/folder").mkdir(mode=0)
        said = self.check_as_ordinary_user().stdout.splitlines()
        (self.source / "Data/folder").chmod(0o755)
        self.assertEqual(said, [f"source/Data/{name}:1:1: error: it cannot be read: Permission denied [unreadable]"
                                for name in ("closed", "folder")])


class NamesWordsTest(WordsTestCase):
    PATH = "Package.strings"

    def test_a_key_is_found_where_it_stands(self):
        rows = [
            ('// CFBundleIdentifier\nCFBundleName = A;\n  CFBundleIdentifier = x;', "3:3"),
            ('"CFBundleName" = "CFBundleIdentifier";\n"CFBundleIdentifier"\n = "x";', "2:1"),
            ("# 'CFBundleIdentifier' = 'x';\n'CFBundleName' = A; 'CFBundleIdentifier' = x;", "2:21"),
        ]
        for text, place in rows:
            with self.subTest(text):
                self.write(self.PATH, text)
                self.assertEqual([row[1] for row in self.found() if row[3] == "identifier"], [place])

    def test_names_that_are_missing(self):
        self.write(self.PATH, '"CFBundleIdentifier" = "com.example.Hello";')
        self.assert_said("package-strings", self.PATH, ("1:1", '"CFBundleName" is missing'))
        self.write(self.PATH, b'"CFBundleName" = "\xff";')
        self.assert_said("package-strings", self.PATH,
                         ("1:1", "it is neither UTF-8 nor UTF-16 with a byte order mark"))
        self.write(self.PATH, '"CFBundleName" = "A";\n"CFBundleIdentifier" = "x.A";\n"CFBundleDisplayName" = "%s";' % ("ä" * 101))
        self.assert_said("package-title", self.PATH, ("3:1", '"CFBundleDisplayName" is longer than 100 characters'))
        self.write(self.PATH, '\n"CFBundleName" = "a/b";')
        self.assert_said("package-strings", self.PATH,
                         ("2:1", '"CFBundleName" holds a slash or a control character, which no name may hold'))


class MadePackageWordsTest(MadePackageTestCase):
    def said(self, check):
        rows = [LINE.fullmatch(line).groups() for line in self.check_bundle().stdout.splitlines()]
        return [(path.removeprefix("Hello.app/"), text) for path, _, text, name in rows if name == check]

    def test_a_launcher_that_cannot_be_started(self):
        launcher = self.build() / "Contents/Linux/Zephyrkit"
        launcher.chmod(0o644)
        self.assertEqual(self.said("bundle-part"), [("Contents/Linux/Zephyrkit", "it may not be executed")])
        launcher.unlink()
        self.assertEqual(self.said("bundle-part"), [("Contents/Linux/Zephyrkit", "it is missing")])
        launcher.mkdir()
        self.assertEqual(self.said("bundle-part"), [("Contents/Linux/Zephyrkit", "it is no file")])

    def test_a_description_that_is_none(self):
        path = self.build() / "Contents/Info.plist"
        text = path.read_text()
        path.write_text(text.replace("CFBundleExecutable", "Other"))
        self.assertEqual(self.said("bundle-part"),
                         [("Contents/Info.plist", 'it names no launcher: "CFBundleExecutable" is missing')])
        path.write_text("no list")
        self.assertEqual(self.said("bundle-part"), [("Contents/Info.plist", "it is no property list")])
        path.write_text(text.replace("com.example.Hello", "com.example.hello"))
        self.assertEqual(self.said("identifier"), [("Contents/Info.plist", 'the last part of the identifier '
                                                    '"com.example.hello" must be the bundle name "Hello"')])

    def test_files_that_become_shorter(self):
        self.build()
        for path, check in (("Contents/Info.plist", "bundle-part"), ("Contents/Resources/Data.datx", "archive"),
                            ("Contents/Resources/Info.datx", "archive")):
            with self.subTest(path):
                process = check_with_calls(self.folder, "Hello.app", "-P", self.folder / "Hello.app" / path,
                                           "-e", "trace=pread64", "-e", "inject=pread64:retval=0:when=1+")
                said, _ = process.communicate(timeout=60)
                self.assertIn(f"Hello.app/{path}:1:1: error: it became shorter while it was read [{check}]\n", said)

    def test_a_description_that_is_too_large(self):
        (self.build() / "Contents/Info.plist").write_bytes(bytes((1 << 20) + 1))
        self.assertEqual(self.said("bundle-part"), [("Contents/Info.plist", "it is too large")])

    def test_parts_that_are_folders(self):
        for path, check in ((MANIFEST, "manifest"), ("Contents/Resources/Info.datx", "archive")):
            self.build()
            (self.bundle / path).unlink()
            (self.bundle / path).mkdir()
            self.assertIn((path, "it is no file"), self.said(check))

    def test_a_manifest_that_is_none(self):
        manifest = self.build() / MANIFEST
        lines = manifest.read_text().splitlines(keepends=True)
        for number in (1, len(lines)):
            manifest.write_text("".join([*lines[: number - 1], "none\n", *lines[number:]]))
            self.assertEqual(self.said("manifest"), [(MANIFEST, f"line {number} is no sum and path")])

    def test_archives_that_do_not_open(self):
        data = self.build() / "Contents/Resources/Data.datx"
        whole = data.read_bytes()
        rows = [
            (b"", "the file is empty"),
            (b"GIF89a" * 100, "not a CPIO archive"),
            (whole[: len(whole) // 2], "the archive ends in the middle of its compressed data"),
        ]
        for contents, reason in rows:
            data.write_bytes(contents)
            self.assertEqual([text for path, text in self.said("archive")], [reason])
        shutil.rmtree(data.parent / "UILang")
        data.unlink()
        data.mkdir()
        self.assertIn(("Contents/Resources/Data.datx", "it is no file"), self.said("bundle-part"))

    def test_the_program_that_is_named(self):
        self.build()
        rows = [
            ("", "no-program", "no program is named, and none that may be executed is at the top of Data"),
            ("setup", "exec-outside", '"setup" is not in Data, so it is not in the package'),
            ("$Data$/none", "exec-missing", '"$Data$/none" is not there'),
            ("$Data$/plain", "exec-not-executable", '"$Data$/plain" is no file that may be executed'),
            ("$Data$/None.app", "exec-bundle", '"$Data$/None.app" is no bundle with a main program'),
        ]
        self.hostile([("Data", 0o040755, b""), ("Data/plain", 0o100644, b"")])
        for exec_, check, text in rows:
            self.startup(exec_=exec_, param="")
            startup = (self.source / "Info/Startup.xml").read_bytes()
            self.hostile([("Info", 0o040755, b""), ("Info/Startup.xml", 0o100644, startup)], "Info")
            self.assertEqual(self.said(check), [("Contents/Resources/Info.datx/Info/Startup.xml", text)])

    def test_members_of_an_archive(self):
        self.build()
        self.hostile([("Data", 0o040755, b""), ("Data/setup", 0o106755, b"#!/bin/sh\n"), ("Data/SETUP", 0o100644, b""),
                      ("Data/a", 0o120777, b"/x"), ("Data/b", 0o120777, b"../x"), ("Data/é", 0o100644, b""),
                      ("Data/e\u0301", 0o100644, b""), ("Data/" + "n" * 256, 0o100644, b"")])
        self.hostile([("Info", 0o040755, b""), ("Info/large", 0o100644, bytes((16 << 20) + 1))], "Info")
        place = "Contents/Resources/Data.datx/Data/"
        rows = [
            ("set-id", place + "setup", "its set-user-ID or set-group-ID bit is dropped"),
            ("name-case", place + "setup", 'the name differs from "SETUP" only in capitals'),
            ("link-absolute", place + "a", 'the link leads to "/x"'),
            ("link-outside", place + "b", 'the link leads to "../x", which is outside Data'),
            ("name-form", place + "é", 'the name differs from "e\u0301" only in its Unicode form'),
            ("name-too-long", place + "n" * 256, "a part of the name has more than 255 bytes"),
            ("too-large", "Contents/Resources/Info.datx", "it holds more than 16 MiB, so it was not looked at"),
        ]
        for check, path, text in rows:
            self.assertEqual(self.said(check), [(path, text)])

    def test_devices_in_an_archive(self):
        self.build()
        self.hostile([("Data", 0o040755, b""), ("Data/setup", 0o100755, b"#!/bin/sh\n"), ("Data/null", 0o020666, b""),
                      ("Data/fifo", 0o010644, b""), ("Data/socket", 0o140755, b"")])
        place = "Contents/Resources/Data.datx/Data/"
        self.assertEqual(self.said("special-file"), [(place + name, "devices, sockets and FIFOs are not unpacked")
                                                     for name in ("fifo", "null", "socket")])


if __name__ == "__main__":
    unittest.main()
