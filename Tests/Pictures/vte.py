# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The terminal that turns right-to-left lines around, which terminal_screens.py shows."""

import subprocess


def skip_without_vte(test):
    """The system's Python has the library; the one that runs the tests may be another."""
    words = "import gi; gi.require_version('Vte', '2.91')"
    if subprocess.run(["/usr/bin/python3", "-c", words], capture_output=True).returncode != 0:
        test.skipTest("gir1.2-vte-2.91 is not installed")
