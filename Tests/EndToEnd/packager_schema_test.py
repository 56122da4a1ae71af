# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the packager writes as JSON, beside the schemas in Docs/schemas that are handed out with it."""

import copy
import json
import os
import pathlib
import re
import shutil
import subprocess
import unittest

import jsonschema

from packager_case import CommandTestCase
from support import BUILD, write

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCHEMAS = ROOT / "Docs/schemas"


def objects_in(value):
    """Every object of a report, the outer ones first."""
    if isinstance(value, dict):
        yield value
    if isinstance(value, (dict, list)):
        for each in value.values() if isinstance(value, dict) else value:
            yield from objects_in(each)


class SchemaTest(CommandTestCase):
    def output(self, command, *arguments, status=0):
        return json.loads(self.run_zpkpack(command, *arguments, "--format", "json", status=status).stdout)

    def expect_fit(self, command, report):
        schema = json.loads((SCHEMAS / f"{command}.schema.json").read_text())
        jsonschema.Draft7Validator.check_schema(schema)
        jsonschema.validate(report, schema)
        return schema

    def expect_no_other(self, report, schema):
        """A member more or less than the schema says is refused everywhere."""
        optional = {"target", "nameBytes"}
        for number, one in enumerate(objects_in(report)):
            for name in [*one, "other"]:
                changed = copy.deepcopy(report)
                there = list(objects_in(changed))[number]
                if there.pop(name, None) is None:
                    there[name] = 1
                if name not in optional:
                    with self.assertRaises(jsonschema.ValidationError, msg=(name, one)):
                        jsonschema.validate(changed, schema)

    def test_every_command_that_writes_json_has_a_schema(self):
        listed = subprocess.run([BUILD / "zpkpack", "--help"], capture_output=True, text=True, check=True).stdout
        writing = set()
        for command in re.findall(r"^  (\w+)  ", listed, re.M):
            told = subprocess.run([BUILD / "zpkpack", command, "--help"], capture_output=True, text=True, check=True)
            if re.search(r"\bjson\b", told.stdout):
                writing.add(command)
        self.assertEqual({path.name.split(".")[0] for path in SCHEMAS.iterdir()}, writing)

    def test_check(self):
        write(self.source / "Package.strings",
              '"CFBundleName" = "Hello";\n"CFBundleIdentifier" = "com.example.Hello";\n')
        self.startup(exec_="$Data$/none")
        write(self.source / "Data/\u202e\n", "", 0o4755)
        report = self.output("check", "source", status=1)
        self.assertEqual([row["check"] for row in report["findings"]], ["set-id", "exec-missing"])
        self.expect_no_other(report, self.expect_fit("check", report))
        self.startup()
        os.remove(self.source / "Data/\u202e\n")
        self.expect_fit("check", self.output("check", "source"))
        self.expect_fit("check", self.output("check", "nowhere", status=1))

    def test_list(self):
        write(self.source / "Data/noise", "a", 0o4640)
        os.symlink("noise", self.source / "Data/way")
        os.link(self.source / "Data/noise", self.source / "Data/second")
        os.utime(self.source / "Data/noise", (-1, -1))
        report = self.output("list", self.small_package("Out.app"))
        self.assertEqual({row["type"] for row in report}, {"file", "folder", "link", "hardLink"})
        self.expect_no_other(report, self.expect_fit("list", report))
        hostile = self.hostile_bundle([("Data", 0o040755, b""), ("Data/\udcff", 0o010644, b"")])
        report = self.output("list", hostile)
        self.assertEqual((report[-1]["type"], report[-1]["nameBytes"]), ("other", "446174612fff"))
        self.expect_fit("list", report)
        (hostile / "Contents/Resources/Info.datx").unlink()
        (hostile / "Contents/Resources/Data.datx").unlink()
        self.assertEqual(self.output("list", hostile, status=1), [])

    def test_strings(self):
        shutil.copytree(ROOT / "Resources/UILang", self.source / "UILang")
        table = self.source / "UILang/de/ZPKStringTable.def"
        write(table, table.read_text().replace('"ZPKString_OK"', '"Own"'))
        report = self.output("strings", "source")
        self.expect_no_other(report, self.expect_fit("strings", report))


if __name__ == "__main__":
    unittest.main(verbosity=2)
