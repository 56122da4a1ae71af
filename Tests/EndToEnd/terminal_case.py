# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Packages for runs on a terminal, and what the tests of such runs share."""

import os
import re

from support import PackageTestCase, write

PRODUCTS = ("Suite für 日本語 Professional Édition 2026, in all its parts", "Tools")

# Waits for a line in a FIFO before it unpacks the payload.
HELD_TOOL = """#!/bin/sh
case $3$4 in *Data.dat*) read -r line < '{gate}' ;; esac
exec "${{0%/*}}/ditto.real" "$@"
"""


class TerminalCase(PackageTestCase):
    def pack(self, name="TestSetup.app", *arguments):
        return super().pack(name, "--without-windows", *arguments)

    def conditional_package(self, condition, products=PRODUCTS):
        listed = "".join(f'<ItemInfo DisplayName="{product}"/>' for product in products)
        write(
            self.source / "Info/Condition.xml",
            f"<UpdateInfo><Conditions>{condition}</Conditions><TargetItems>{listed}</TargetItems></UpdateInfo>",
        )
        return self.simple_package()

    def disc_package(self, products=PRODUCTS):
        return self.conditional_package('<Disc FilePath="no/such/file"/>', products)

    def refused_package(self, products=PRODUCTS):
        return self.conditional_package('<UIMLog Signature="x"/>', products)

    def hold(self, bundle):
        """The launcher will wait before it unpacks the payload, until somebody writes a line to the FIFO given."""
        gate = self.folder / ("gate-%d" % len(list(self.folder.glob("gate-*"))))
        os.mkfifo(gate)
        tool = bundle / "Contents/Helpers/ditto"
        tool.rename(tool.with_name("ditto.real"))
        write(tool, HELD_TOOL.format(gate=gate), 0o755)
        return gate

    def texts(self, bundle, language):
        table = (bundle / f"Contents/Resources/UILang/{language}/ZPKStringTable.def").read_text()
        rows = re.findall(r'^"ZPKString_(\w+)"\s*=\s*"(.*)";$', table, re.MULTILINE)
        return {key: value.replace("\\n", "\n") for key, value in rows}
