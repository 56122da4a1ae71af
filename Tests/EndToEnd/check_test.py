# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""`zpkpack check` from outside: one fixture a check, and what it must never do with a hostile package.

What is expected stands in Findings/NAME.txt; with ZPK_TEST_WRITE=1 the files are written anew.
"""

import gzip
import json
import os
import pathlib
import re
import shutil
import socket
import subprocess
import unittest

import elf
from packager_case import scrambled
from support import BUILD, TEMPLATE, PackageTestCase, odc_archive, png_picture, write

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
FINDINGS = HERE / "Findings"
NOBODY = 65534
CHECKS = re.findall(r"^## (.*)$", (ROOT / "Docs/Checks.md").read_text(), re.M)

CONDITION = """<UpdateInfo XmlVersion="1.0">
  <Conditions>
    <UIMLog Signature="com.example.suite-3"/>
    <Disc FilePath="Suite/Setup*.bin"/>
  </Conditions>
  <TargetItems>
    <ItemInfo DisplayName="Example Suite 3"/>
  </TargetItems>
</UpdateInfo>
"""


class CheckTestCase(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.write("Package.strings", '"CFBundleName" = "Hello";\n"CFBundleIdentifier" = "com.example.Hello";\n')
        self.startup(param="one")
        self.write("Data/setup", "#!/bin/sh\n", 0o755)
        self.write("Info/Condition.xml", CONDITION)
        for code in ("en", "ja"):
            table = f"UILang/{code}/ZPKStringTable.def"
            lines = (ROOT / "Resources" / table).read_text().splitlines(keepends=True)
            self.write(table, "".join(line for line in lines if line.startswith('"')))
        self.languages('<Language Code="en"/><Language Code="ja"/>')

    def write(self, relative, text, mode=None):
        return write(self.source / relative, text, mode)

    def languages(self, offers, fallback="en"):
        self.write("UILang/Languages.xml", f'<Languages FallBackCode="{fallback}">{offers}</Languages>\n')

    def replace(self, relative, old, new):
        text = (self.source / relative).read_text()
        self.assertIn(old, text)
        self.write(relative, text.replace(old, new))

    def condition(self, old, new):
        self.replace("Info/Condition.xml", old, new)

    def table(self, old, new):
        self.replace("UILang/ja/ZPKStringTable.def", old, new)

    def allow(self, name):
        with open(self.source / "Package.strings", "a") as file:
            file.write(f"# zpkpack: allow {name}\n")

    def check(self, *arguments, **settings):
        settings.setdefault("timeout", 60)
        return subprocess.run(
            [BUILD / "zpkpack", "check", *map(str, arguments or ["source"])],
            capture_output=True, text=True, cwd=self.folder, **settings)

    def check_as_ordinary_user(self):
        self.folder.chmod(0o755)
        settings = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        return self.check(**settings)


class CheckTest(CheckTestCase):
    """One fixture a check, and the whole of what is said of it."""

    def expect(self, name, done=None):
        done = done or self.check()
        self.assertEqual(done.stderr, "")
        self.assertIn(f"[{name}]", done.stdout)
        has_errors = any(": error: " in line for line in done.stdout.splitlines())
        self.assertEqual(done.returncode, 1 if has_errors else 0)
        golden = FINDINGS / (name + ".txt")
        if os.environ.get("ZPK_TEST_WRITE"):
            golden.write_text(done.stdout)
        self.assertEqual(done.stdout, golden.read_text())
        self.check_allowance(name)

    def check_allowance(self, name):
        """One comment silences the check and nothing else."""
        if name in ("missing-part", "package-strings", "allow-unused"):
            return
        before = [line for line in self.check().stdout.splitlines() if not line.endswith(f"[{name}]")]
        self.allow(name)
        self.assertEqual(self.check().stdout.splitlines(), before)

    def test_every_check_has_a_fixture(self):
        self.assertEqual(sorted(path.stem for path in FINDINGS.iterdir()), sorted(CHECKS))
        for path in FINDINGS.iterdir():
            self.assertIn(f"[{path.stem}]\n", path.read_text())
        rules = json.loads(self.check("source", "--format", "sarif").stdout)["runs"][0]["tool"]["driver"]["rules"]
        self.assertEqual([rule["id"] for rule in rules], CHECKS)
        tests = {name[len("test_"):].replace("_", "-") for name in dir(self) if name.startswith("test_")}
        tests |= {"archive", "bundle-part", "manifest", "starter"}  # of made packages
        self.assertEqual(sorted(set(CHECKS) - tests), [])

    def test_clean_source(self):
        done = self.check("--strict", "source")
        self.assertEqual((done.stdout, done.stderr, done.returncode), ("", "", 0))

    def test_missing_part(self):
        shutil.rmtree(self.source / "Data")
        shutil.rmtree(self.source / "Info")
        (self.source / "Package.strings").unlink()
        self.expect("missing-part")

    def test_unreadable(self):
        self.write("Data/closed", "", 0o000)
        (self.source / "Data/folder").mkdir(mode=0o000)
        done = self.check_as_ordinary_user()
        (self.source / "Data/folder").chmod(0o755)
        golden = FINDINGS / "unreadable.txt"
        if os.environ.get("ZPK_TEST_WRITE"):
            golden.write_text(done.stdout)
        self.assertEqual((done.stdout, done.returncode), (golden.read_text(), 1))

    def test_too_large(self):
        self.write("Info/Condition.xml", "<UpdateInfo>" + " " * (1 << 20) + "</UpdateInfo>")
        self.expect("too-large")

    def test_package_title(self):
        with open(self.source / "Package.strings", "a") as file:
            file.write('"CFBundleDisplayName" = "two\\nlines";\n')
        self.expect("package-title")

    def test_icon(self):
        self.write("Icon.png", png_picture(256, 256)[:-1])
        self.expect("icon")

    def test_icon_that_is_none(self):
        for contents, reason in (
            (b"GIF89a", "it is no PNG picture"),
            (png_picture(256, 256).replace(b"IDAT", b"IDAU"), "it is a damaged PNG picture"),
            (png_picture(0, 256), "it is a damaged PNG picture"),
            # The sum of its last part is another.
            (png_picture(256, 256)[:-1] + b"\0", "it is a damaged PNG picture"),
        ):
            self.write("Icon.png", contents)
            self.assertIn("source/Icon.png:1:1: error: %s [icon]\n" % reason, self.check().stdout)

    def test_icon_drawing(self):
        self.write("Icon.svg", '<svg viewBox="0 0 9 9"><clipPath/></svg>')
        self.expect("icon-drawing")

    def test_icon_twice(self):
        self.write("Icon.png", png_picture(256, 256))
        self.write("Icon.svg", "")
        self.expect("icon-twice")

    def test_icon_too_large(self):
        self.write("Icon.png", png_picture(513, 513))
        self.expect("icon-too-large")

    def test_icon_small(self):
        self.write("Icon.png", png_picture(47, 47))
        self.expect("icon-small")

    def test_icon_shape(self):
        self.write("Icon.png", png_picture(256, 128))
        self.expect("icon-shape")

    def test_package_strings(self):
        self.write("Package.strings", '// ä\n# a comment\n"CFBundleName" = "Hello";\n"CFBundleIdentifier" "x";\n')
        self.expect("package-strings")

    def test_identifier(self):
        self.write("Package.strings", '"CFBundleName" = "Hello";\n  "CFBundleIdentifier" = "com.example.hello";\n')
        self.expect("identifier")

    def test_allow_unused(self):
        self.allow("exec-outside dollars")
        self.allow("nothing-of-this-kind")
        with open(self.source / "Package.strings", "a") as file:
            file.write("# zpkpack: alow dollar\n# no instruction\n")
        self.expect("allow-unused")

    def test_xml_syntax(self):
        self.write("Info/Condition.xml", "<UpdateInfo>\n  <Conditions>\n  </Condition>\n</UpdateInfo>\n")
        self.write("Info/Startup.xml", "<a>" * 1001 + "</a>" * 1001)
        self.write("UILang/Languages.xml", "")
        self.expect("xml-syntax")

    def test_xml_encoding(self):
        self.write("Info/Condition.xml", '<?xml version="1.0" encoding="KLINGON"?>\n<UpdateInfo/>\n')
        self.expect("xml-encoding")

    def test_unknown_element(self):
        self.condition("<UIMLog", '<UimLog Signature="a"/>\n    <Process Name="b"/>\n    <UIMLog')
        self.condition("</TargetItems>", "</TargetItems>\n  <ItemInfo DisplayName=\"c\"/>")
        self.expect("unknown-element")

    def test_unknown_attribute(self):
        self.write("Info/Startup.xml", '<Startup Exec="$Data$/setup"\n         Params="a" Param="b"\n  exec=\'>\'/>\n')
        self.condition("FilePath", 'Media="c" xml:lang="en" FilePath')
        self.expect("unknown-attribute")

    def test_doubled_element(self):
        self.condition("</UpdateInfo>", '  <Conditions><UIMLog Signature="a"/></Conditions>\n  <TargetItems/>\n</UpdateInfo>')
        self.expect("doubled-element")

    def test_exec_missing(self):
        self.startup(exec_="$Data$/Setup", param="")
        self.expect("exec-missing")

    def test_exec_not_executable(self):
        (self.source / "Data/setup").chmod(0o644)
        self.expect("exec-not-executable")

    def test_exec_bundle(self):
        self.write("Data/Setup.app/Contents/Info.plist", '"CFBundleExecutable" = "Setup";')
        self.startup(exec_="$Data$/Setup.app")
        self.expect("exec-bundle")

    def test_exec_outside(self):
        self.startup(exec_="/bin/sh")
        self.expect("exec-outside")

    def test_no_program(self):
        (self.source / "Info/Startup.xml").unlink()
        (self.source / "Data/setup").chmod(0o644)
        self.write("Data/.hidden", "#!/bin/sh\n", 0o755)
        self.expect("no-program")

    def test_param_words(self):
        self.startup(param="-a -b")
        self.expect("param-words")

    def test_condition_never(self):
        self.write("Info/Condition.xml", '<UpdateInfo>\n  <Conditions><Registry KeyName="a"/></Conditions>\n</UpdateInfo>\n')
        self.expect("condition-never")

    def test_display_name(self):
        self.condition("<ItemInfo", '<ItemInfo/>\n    <ItemInfo DisplayName=""/>\n    <ItemInfo')
        self.expect("display-name")

    def test_disc_pattern_never(self):
        rows = ("./Setup*", "a//b*", "Suite/*/", "*/../Setup", "Suite\\Setup*.bin")
        self.condition("    <Disc", "".join(f'    <Disc FilePath="{row}"/>\n' for row in rows) + "    <Disc")
        self.expect("disc-pattern-never")

    def test_disc_pattern_root(self):
        self.condition("    <Disc", '    <Disc FilePath="*Setup.bin"/>\n    <Disc FilePath="*/Setup.bin"/>\n    <Disc')
        self.expect("disc-pattern-root")

    def test_languages(self):
        self.write("UILang/Languages.xml", '<Languages FallbackCode="en">\n  <Language code="en"/>\n</Languages>\n')
        self.expect("languages")

    def test_language_without_folder(self):
        self.languages('<Language Code="en"/><Language Code="ja"/><Language Code="de"/>')
        self.expect("language-without-folder")

    def test_language_not_offered(self):
        self.languages('<Language Code="en"/>')
        self.expect("language-not-offered")

    def test_fallback_without_folder(self):
        self.languages('<Language Code="en"/><Language Code="ja"/>', fallback="de")
        self.expect("fallback-without-folder")

    def test_language_doubled(self):
        self.languages('<Language Code="en"/><Language Code="ja"/>\n<Language Code="en"/>')
        self.expect("language-doubled")

    def test_language_never_asked(self):
        codes = ("en-US", "zh-Hans", "EN", "C", "sr@latin", "es_419", "gsw")
        for code in codes:
            shutil.copytree(self.source / "UILang/en", self.source / "UILang" / code)
        self.languages("\n".join(f'<Language Code="{code}"/>' for code in ("en", "ja", *codes)))
        self.expect("language-never-asked")

    def test_table_missing(self):
        (self.source / "UILang/ja/ZPKStringTable.def").unlink()
        self.expect("table-missing")

    def test_table_encoding(self):
        path = self.source / "UILang/ja/ZPKStringTable.def"
        path.write_bytes(path.read_bytes() + "// é".encode("utf-8") + "é".encode("latin-1") + b"\n")
        self.expect("table-encoding")

    def test_table_syntax(self):
        self.table('"ZPKString_OK" = "OK";', '"ZPKString_OK" = "終\\q" / ;\r"a";')
        self.expect("table-syntax")

    def test_key_missing(self):
        self.table('"ZPKString_OK" = "OK";', "")
        self.write("UILang/ZPKStringTable.def", '"ZPKString_Error" = "Error";\n')
        self.table('"ZPKString_Error"', '"ZPKString_error"')
        self.expect("key-missing")

    def test_key_unknown(self):
        self.table('"ZPKString_OK"', '"ZPKString_Ok" = "OK"; note = ""; "ZPKString_OK"')
        self.expect("key-unknown")

    def test_key_doubled(self):
        self.table('"ZPKString_OK"', '"ZPKString_OK" = "a";\n"ZPKString_OK"')
        self.expect("key-doubled")

    def test_placeholder(self):
        self.table("%s", "")
        self.replace("UILang/en/ZPKStringTable.def", "%s\\n", "%s\\n%s\\n")
        self.expect("placeholder")

    def test_dollar(self):
        self.table('= "OK"', '= "$OK$"')
        self.expect("dollar")

    def test_button_name(self):
        self.replace("UILang/en/ZPKStringTable.def", '"ZPKString_DISCCHECK_START" = "Search"', '"ZPKString_DISCCHECK_START" = "Find"')
        self.expect("button-name")

    def test_special_file(self):
        os.mkfifo(self.source / "Data/fifo")
        os.mkfifo(self.source / "Info/fifo")
        here = os.getcwd()
        os.chdir(self.source / "Data")  # a socket's path must be short
        with socket.socket(socket.AF_UNIX) as server:
            server.bind("socket")
        os.chdir(here)
        self.expect("special-file")

    def test_name_too_long(self):
        path = self.write("Data/" + "n" * 254, "")
        try:
            os.setxattr(path, "user.note", b"a")
        except OSError as failure:
            self.skipTest(f"no extended attributes here: {failure}")
        self.write("Data/" + "o" * 254, "")
        self.expect("name-too-long")

    def test_file_too_large(self):
        for name, size in (("large", 1 << 33), ("largest", (1 << 33) - 1)):
            os.truncate(self.write(f"Data/{name}", ""), size)
        self.expect("file-too-large")

    def test_name_case(self):
        for name in ("Readme", "README", "sub/README", "STRASSE", "straße", "Äpfel", "äpfel"):
            self.write("Data/" + name, "")
        self.expect("name-case")

    def test_name_form(self):
        for name in ("\u00e9", "e\u0301", "ﬁ"):
            self.write("Data/" + name, "")
        self.expect("name-form")

    def test_link_absolute(self):
        os.symlink("/usr/share", self.source / "Data/share")
        self.expect("link-absolute")

    def test_link_outside(self):
        (self.source / "Data/sub").mkdir()
        os.symlink("../setup", self.source / "Data/sub/inside")
        os.symlink("../../Info", self.source / "Data/sub/outside")
        os.symlink("a/../../b", self.source / "Data/climbing")
        os.symlink("./../b", self.source / "Data/dotted")
        os.symlink("../Package.strings", self.source / "Info/strings")
        self.expect("link-outside")

    def test_set_id(self):
        self.write("Data/user", "", 0o4755)
        self.write("Data/group", "", 0o2755)
        self.expect("set-id")

    def test_program_processor(self):
        self.write("Data/setup", elf.machine_program(elf.AARCH64))
        self.expect("program-processor")

    def test_program_loader(self):
        self.write("Data/setup", elf.machine_program(interpreter="/lib/ld-musl-x86_64.so.1"))
        self.expect("program-loader")

    def test_program_library(self):
        (self.source / "Info/Startup.xml").unlink()
        self.write("Data/lib/libcarried.so.1", "")
        program = elf.machine_program(
            interpreter="/lib64/ld-linux-x86-64.so.2",
            libraries=["libc.so.6", "libQt6Core.so.6", "libcarried.so.1", "ld-linux-x86-64.so.2"],
            run_path="/usr/lib:$ORIGIN/lib")
        self.write("Data/setup", program)
        self.expect("program-library")

    def test_script_without_interpreter(self):
        self.write("Data/setup", "echo hello\n")
        self.expect("script-without-interpreter")


class MadePackageTestCase(CheckTestCase):
    """Bundles on a template of their own, which holds the parts that are looked for and little else."""

    def setUp(self):
        super().setUp()
        template = self.folder / "Template.app/Contents"
        for program in ("Linux/Zephyrkit", "Helpers/ditto"):
            write(template / program, "#!/bin/sh\n", 0o755)
        shutil.copy(TEMPLATE / "Contents/Info.plist", template / "Info.plist")
        for form in ("MainMenu", "ProgressWindow", "CDSearchWindow"):
            write(template / f"Resources/{form}.ui", "<ui/>\n")
        write(template / "PlugIns/ZPKDesktop.so", "the windows\n")
        self.bundle = self.folder / "Hello.app"

    def try_to_build(self, name="Hello.app", *arguments):
        return subprocess.run(
            [BUILD / "zpkpack", "build", "source", "-o", name, "--template", "Template.app", "--force", *arguments],
            capture_output=True, text=True, cwd=self.folder)

    def build(self, name="Hello.app"):
        done = self.try_to_build(name)
        self.assertEqual(done.returncode, 0, done.stderr)
        return self.folder / name

    def check_bundle(self, *arguments):
        done = self.check(*arguments or ["Hello.app"], env={**os.environ, "TMPDIR": str(self.temporary)})
        self.assertEqual(list(self.temporary.iterdir()), [])
        return done

    def hostile(self, members, archive="Data"):
        packed = gzip.compress(odc_archive(members), mtime=0)
        write(self.bundle / f"Contents/Resources/{archive}.datx", scrambled(packed))


class MadePackageCheckTest(MadePackageTestCase):
    """A bundle, or one file."""

    def expect(self, name):
        done = self.check_bundle()
        self.assertEqual(done.stderr, "")
        self.assertIn(f"[{name}]", done.stdout)
        golden = FINDINGS / (name + ".txt")
        if os.environ.get("ZPK_TEST_WRITE"):
            golden.write_text(done.stdout)
        self.assertEqual((done.stdout, done.returncode), (golden.read_text(), 1))

    def lines(self, *arguments):
        """Path, check of each finding but those of the manifest, which any change in a bundle breaks."""
        rows = (re.fullmatch(r"(.*?):\d+:\d+: \w+: .* \[([a-z-]+)\]", line)
                for line in self.check_bundle(*arguments).stdout.splitlines())
        return [row.groups() for row in rows if row[2] != "manifest"]

    def test_what_was_built_of_a_clean_source_is_clean(self):
        for name, *options in (["Hello.app"], ["Hello.run"], ["Bare.app", "--without-windows"]):
            self.assertEqual(self.try_to_build(name, *options).returncode, 0)
            done = self.check_bundle("--strict", name)
            self.assertEqual((done.stdout, done.stderr, done.returncode), ("", "", 0))

    def test_errors_stop_a_build_and_warnings_do_not(self):
        self.startup(exec_="$Data$/none", param="a b")
        done = self.try_to_build()
        self.assertEqual((done.stdout, done.returncode), ("", 1))
        self.assertRegex(done.stderr, r"\Azpkpack: error: source/Info/Startup.xml:1:10: error: .* \[exec-missing\]\n\Z")
        self.assertFalse(self.bundle.exists())
        self.allow("exec-missing")
        done = self.try_to_build("Hello.app", "--verbose")
        self.assertEqual(done.returncode, 0)
        self.assertIn("[param-words]", done.stderr)

    def test_starter(self):
        starter = self.build() / "Hello.desktop"
        starter.chmod(0o644)
        self.assertEqual(self.lines(), [("Hello.app/Hello.desktop", "starter")])
        starter.unlink()
        self.expect("starter")

    def test_bundle_part(self):
        self.build()
        (self.bundle / "Contents/Helpers/ditto").chmod(0o644)
        (self.bundle / "Contents/Linux/Zephyrkit").unlink()
        (self.bundle / "Contents/Resources/Data.datx").unlink()
        (self.bundle / "Contents/Resources/ProgressWindow.ui").unlink()
        (self.bundle / "Contents/Resources/Manifest.sha256").unlink()
        self.expect("bundle-part")

    def test_archive(self):
        self.build()
        data = self.bundle / "Contents/Resources/Data.datx"
        data.write_bytes(data.read_bytes()[:-20])
        (self.bundle / "Contents/Resources/Info.datx").write_bytes(b"no archive")
        self.expect("archive")

    def test_manifest(self):
        self.build()
        write(self.bundle / "Contents/Linux/Zephyrkit", "#!/bin/sh\nother\n")
        write(self.bundle / "Contents/Resources/added", "")
        (self.bundle / "Contents/Resources/UILang/ja/ZPKStringTable.def").unlink()
        self.expect("manifest")

    def test_identifier_of_a_bundle(self):
        self.build()
        path = self.bundle / "Contents/Info.plist"
        path.write_text(path.read_text().replace("com.example.Hello", "com.example.Other"))
        self.assertEqual(self.lines(), [("Hello.app/Contents/Info.plist", "identifier")])

    def test_descriptions_and_texts_of_a_bundle(self):
        for name, form in (("Hello.app", "bundle"), ("Hello.run", "file")):
            self.startup(exec_="$Data$/setup", param="a b")
            self.condition("<ItemInfo", "<Item/><ItemInfo") if form == "bundle" else None
            self.table('"ZPKString_OK"', '"ZPKString_Ok"') if form == "bundle" else None
            self.build(name)
            resources = f"{name}/Contents/Resources"
            self.assertEqual(self.lines(name), [
                (f"{resources}/Info.datx/Info/Condition.xml", "unknown-element"),
                (f"{resources}/Info.datx/Info/Startup.xml", "param-words"),
                (f"{resources}/UILang/ja/ZPKStringTable.def", "key-missing"),
                (f"{resources}/UILang/ja/ZPKStringTable.def", "key-unknown"),
            ])

    def test_the_program_of_a_bundle_is_looked_for(self):
        self.write("Data/plain", "")
        self.write("Data/Setup.app/Contents/Linux/Setup", "#!/bin/sh\n", 0o755)
        self.write("Data/Setup.app/Contents/Info.plist", '"CFBundleExecutable" = "Setup";')
        rows = [("$Data$/setup", None), ("$Data$/Setup.app", None), ("", None), ("$Data$/none", "exec-missing"),
                ("$Data$/plain", "exec-not-executable"), ("$Data$/None.app", "exec-bundle"), ("/bin/sh", "exec-outside")]
        self.build()
        for exec_, check in rows:
            self.startup(exec_=exec_, param="")
            startup = (self.source / "Info/Startup.xml").read_bytes()
            self.hostile([("Info", 0o040755, b""), ("Info/Startup.xml", 0o100644, startup)], "Info")
            found = [row[1] for row in self.lines()]
            self.assertEqual(found, [check] if check else [], exec_)

    def found_in_payload(self, *members):
        self.hostile([("Data", 0o040755, b""), *members])
        return self.lines()

    def test_the_program_in_an_archive_is_looked_at(self):
        self.build()
        path = "Hello.app/Contents/Resources/Data.datx/Data/setup"
        loader = "/lib64/ld-linux-x86-64.so.2"
        rows = [
            (b"echo hello\n", "script-without-interpreter"),
            (b"", "script-without-interpreter"),
            (b"#!/usr/bin/perl\n", "program-loader"),
            (elf.machine_program(elf.AARCH64), "program-processor"),
            (elf.machine_program(interpreter="/lib/ld-musl-x86_64.so.1"), "program-loader"),
            (elf.machine_program(interpreter=loader, libraries=["libQt6Core.so.6"]), "program-library"),
            (elf.machine_program(interpreter=loader)[:40], "unreadable"),
            (elf.machine_program(interpreter=loader), None),
            (b"#!/bin/sh\n" + b"#" * 3_000_000, None),
        ]
        for number, (contents, check) in enumerate(rows):
            with self.subTest(number, check=check):
                self.assertEqual(self.found_in_payload(("Data/setup", 0o100755, contents)), [(path, check)] if check else [])

    def test_libraries_in_an_archive_count_wherever_they_stand(self):
        self.build()
        program = elf.machine_program(
            interpreter="/lib64/ld-linux-x86-64.so.2", libraries=["libone.so", "libtwo.so", "libthree.so"],
            run_path="$ORIGIN/lib:$ORIGIN/../Data/other:/usr/lib")
        found = self.found_in_payload(
            ("Data/lib", 0o040755, b""), ("Data/lib/libone.so", 0o100644, b""), ("Data/setup", 0o100755, program),
            ("Data/other", 0o040755, b""), ("Data/other/libtwo.so", 0o100644, b""), ("Data/libthree.so", 0o100644, b""))
        self.assertEqual([check for _, check in found], ["program-library"])
        self.assertIn("libthree.so", self.check_bundle().stdout)

    def test_without_a_name_the_first_program_is_looked_at(self):
        (self.source / "Info/Startup.xml").unlink()
        self.build()
        good, bad = b"#!/bin/sh\n", b"echo\n"
        rows = [([("a", bad), ("b", good)], True), ([("a", good), ("b", bad)], False), ([("b", bad), ("a", good)], False),
                ([("b", good), ("a", bad)], True), ([(".a", bad), ("b", good)], False)]
        for members, is_found in rows:
            found = self.found_in_payload(*((f"Data/{name}", 0o100755, text) for name, text in members))
            self.assertEqual([check for _, check in found], ["script-without-interpreter"] * is_found, members)

    def test_one_file_is_looked_at_like_a_bundle(self):
        self.write("Data/setup", "echo hello\n")
        os.symlink("/x", self.source / "Data/a")
        self.write("Data/user", "", 0o4755)
        self.write("Data/README", "")
        self.write("Data/readme", "")
        self.allow("script-without-interpreter")
        expected = ["link-absolute", "name-case", "script-without-interpreter", "set-id"]
        for name in ("Hello.app", "Hello.run"):
            self.build(name)
            self.assertEqual(sorted(check for _, check in self.lines(name)), expected)

    def test_members_that_do_not_come_out_as_they_are(self):
        self.build()
        self.hostile([("Data", 0o040755, b""), ("Data/FIFO", 0o010644, b""), ("Data/a", 0o120777, b"/x"),
                      ("Data/inner", 0o040755, b""), ("Data/inner/b", 0o120777, b"../../x"),
                      ("Data/inner/c", 0o120777, b"../x"), ("Data/fifo", 0o104755, b""),
                      ("Data/setup", 0o100755, b"#!/bin/sh\n"),
                      ("Data/" + "n" * 256, 0o100644, b"")])
        data = "Hello.app/Contents/Resources/Data.datx/Data"
        self.assertEqual(self.lines(), [
            (f"{data}/FIFO", "special-file"), (f"{data}/a", "link-absolute"), (f"{data}/fifo", "set-id"),
            (f"{data}/fifo", "name-case"), (f"{data}/inner/b", "link-outside"), (f"{data}/{'n' * 256}", "name-too-long")])


class HostileMadePackageTest(MadePackageTestCase):
    """A bundle is somebody else's, too: nothing outside is read or written, and everything ends."""

    def test_descriptions_that_climb_are_written_nowhere(self):
        self.build()
        self.hostile([("Info", 0o040755, b""), ("Info/../../escaped", 0o100644, b"x"), ("/tmp/zpk-escaped", 0o100644, b"x"),
                      ("Info/Startup.xml", 0o120777, b"/dev/zero"), ("Info/Condition.xml", 0o120777, b"/etc/passwd")], "Info")
        done = self.check_bundle()
        self.assertEqual(done.returncode, 1)
        self.assertFalse((self.temporary / "escaped").exists() or pathlib.Path("/tmp/zpk-escaped").exists())
        self.assertNotIn("root:", done.stdout)

    def test_archive_that_unpacks_without_end_is_not_unpacked(self):
        self.build()
        self.hostile([("Info", 0o040755, b""), ("Info/Startup.xml", 0o100644, b"\0" * (20 << 20))], "Info")
        self.assertIn("[too-large]", self.check_bundle().stdout)

    def test_items_of_other_kinds_are_waited_for_by_nobody(self):
        self.build()
        for name in ("Info.plist", "Resources/Info.datx", "Resources/UILang/Languages.xml", "Resources/Manifest.sha256"):
            (self.bundle / "Contents" / name).unlink()
            os.mkfifo(self.bundle / "Contents" / name)
        self.assertEqual(self.check_bundle().returncode, 1)

    def test_what_is_no_package_is_told_in_one_line(self):
        write(self.folder / "file.run", "no package\n")
        (self.folder / "empty.app").mkdir()
        os.mkfifo(self.folder / "fifo")
        for name in ("file.run", "empty.app", "fifo"):
            done = self.check_bundle(name)
            self.assertEqual(done.returncode, 1, name)
            self.assertIn("[bundle-part]", done.stdout)


class FindingFormsTest(CheckTestCase):
    """What the findings come out as, and what the exit status says."""

    def setUp(self):
        super().setUp()
        self.table('"ZPKString_OK"', '"ZPKString_Ok" = "OK"; "ZPKString_OK"')
        self.startup(exec_="$Data$/Setup \u202e\u001b[31m\u00e9".replace("\u001b", "\u009b"), param="")
        os.symlink("/x", os.fsencode(self.source) + b"/Data/a b\x1b[2J\xff\n")

    def test_text_is_sorted_by_path(self):
        lines = self.check().stdout.splitlines()
        self.assertEqual([line.split(":")[0] for line in lines], sorted(line.split(":")[0] for line in lines))
        self.assertEqual(len(lines), 3)

    def test_nothing_reaches_the_terminal_that_it_obeys(self):
        for form in ("text", "json", "sarif"):
            output = self.check("source", "--format", form).stdout
            self.assertRegex(output, r"\A[\n -~\u00e9]*\Z", form)

    def test_json(self):
        report = json.loads(self.check("source", "--format", "json").stdout)
        self.assertEqual((report["errors"], report["warnings"]), (1, 2))
        text = [
            "{path}:{line}:{column}: {severity}: {text} [{check}]".format(**finding)
            for finding in report["findings"]
        ]
        self.assertEqual(text, self.check().stdout.splitlines())

    def test_sarif_fits_its_schema(self):
        import jsonschema

        schema = json.loads((HERE / "sarif-2.1.0.schema.json").read_text())
        for source in ("source", "nothing", str(self.source)):
            report = json.loads(self.check(source, "--format", "sarif").stdout)
            jsonschema.validate(report, schema)
            del report["runs"][0]["tool"]["driver"]["name"]
            with self.assertRaises(jsonschema.ValidationError):
                jsonschema.validate(report, schema)

    def test_sarif_says_what_the_text_says(self):
        run = json.loads(self.check("source", "--format", "sarif").stdout)["runs"][0]
        rules = [rule["id"] for rule in run["tool"]["driver"]["rules"]]
        self.assertEqual(rules, CHECKS)
        lines = []
        for result in run["results"]:
            self.assertEqual(rules[result["ruleIndex"]], result["ruleId"])
            place = result["locations"][0]["physicalLocation"]
            region = place["region"]
            lines.append("{}:{}: {}: {} [{}]".format(
                region["startLine"], region["startColumn"], result["level"], result["message"]["text"], result["ruleId"]))
        self.assertEqual(lines, [line.split(":", 1)[1] for line in self.check().stdout.splitlines()])
        self.assertIn("source/Data/a%20b%1B%5B2J%FF%0A",
                      [result["locations"][0]["physicalLocation"]["artifactLocation"]["uri"] for result in run["results"]])

    def test_exit_status(self):
        self.assertEqual(self.check("source").returncode, 1)
        self.startup()
        self.assertEqual(self.check("source").returncode, 0)
        self.assertEqual(self.check("--strict", "source").returncode, 1)

    def test_explanations_are_those_of_the_document(self):
        sections = re.split(r"^## ", (ROOT / "Docs/Checks.md").read_text(), flags=re.M)[1:]
        self.assertGreater(len(sections), 40)
        for section in sections:
            name, _, lines = section.partition("\n\n")
            done = self.check("--explain", name)
            self.assertEqual((done.stdout, done.returncode), (lines.strip().replace("  \n", "\n") + "\n", 0))

    def test_unknown_name_is_wrong_usage(self):
        done = self.check("--explain", "exec-mising")
        self.assertEqual((done.stdout, done.returncode), ("", 2))
        self.assertIn('did you mean exec-missing?', done.stderr)


class HostilePackageTest(CheckTestCase):
    """A source is somebody else's."""

    def expect_end(self, *arguments, status=1):
        done = self.check(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def test_no_fifo_is_waited_for(self):
        for name in ("Package.strings", "Info/Startup.xml", "Info/Condition.xml", "Data/setup",
                     "UILang/Languages.xml", "UILang/ja/ZPKStringTable.def"):
            (self.source / name).unlink()
            os.mkfifo(self.source / name)
        self.expect_end()

    def test_no_device_is_read(self):
        for name in ("Package.strings", "Info/Startup.xml", "Info/Condition.xml", "UILang/Languages.xml",
                     "UILang/ja/ZPKStringTable.def"):
            (self.source / name).unlink()
            os.symlink("/dev/zero", self.source / name)
        self.expect_end()

    def test_folders_stand_where_files_are_expected(self):
        for name in ("Package.strings", "Info/Startup.xml", "Info/Condition.xml", "Data/setup",
                     "UILang/Languages.xml", "UILang/ja/ZPKStringTable.def"):
            (self.source / name).unlink()
            (self.source / name).mkdir()
        self.expect_end()

    def test_links_that_lead_in_a_circle(self):
        shutil.rmtree(self.source / "UILang")
        os.symlink("UILang", self.source / "UILang")
        os.symlink("..", self.source / "Data/up")
        self.expect_end(status=0)

    def test_many_faults_take_little(self):
        self.write("Info/Startup.xml", "<a " + " ".join(f"b{number}=''" for number in range(80000)) + "/>")
        self.write("Info/Condition.xml", "<a>" + "<b c=''/>" * 100000 + "</a>")
        self.write("UILang/ja/ZPKStringTable.def", "".join(f"a{number}=;\\q" for number in range(80000)))
        self.write("Package.strings", "# zpkpack: allow x\n" * 40000)
        for number in range(3000):
            os.symlink("/", self.source / f"Data/{number}")
        done = self.expect_end()
        self.assertLess(len(done.stdout.splitlines()), 6500)
        self.assertIn("(and 1999 more of this check) [", done.stdout)

    def test_programs_that_lie_about_themselves(self):
        whole = elf.machine_program(interpreter="/lib/ld", libraries=["libx.so.1"], run_path="$ORIGIN")
        for cut in range(0, len(whole), 7):
            self.write("Data/setup", whole[:cut])
            self.assertIn(self.check().returncode, (0, 1), cut)
        for at in range(16, len(whole)):
            self.write("Data/setup", whole[:at] + b"\xff" + whole[at + 1:])
            self.assertIn(self.check().returncode, (0, 1), at)


if __name__ == "__main__":
    unittest.main()
