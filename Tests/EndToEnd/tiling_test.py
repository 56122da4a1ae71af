# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Window managers that give each window a tile: the launcher's windows are dialogs, and float."""

import json
import os
import subprocess
import unittest

from compositors import sway, windows_of
from support import PackageTestCase, wait_until, write, x_server
from windows_case import WindowTestCase, string_table


class TilingTest(WindowTestCase):
    setUpClass = PackageTestCase.setUpClass

    def assert_dialogs(self, windows, **variables):
        """Each of the windows floats; `windows` gives those that stand there."""
        application = "com.example." + self.name
        for conditions, title in (
            (None, "FILE_EXTRACT"),
            ('<UIMLog Signature="x"/>', None),
            ('<Disc FilePath="x"/>', "DISCCHECK_TITLE"),
        ):
            with self.subTest(title):
                bundle = self.package(conditions)
                if conditions is None:
                    self.hold(bundle, "Data.dat")
                launcher = subprocess.Popen(
                    [bundle / "Contents/Linux/Zephyrkit"],
                    env=self.environment(**variables),
                    stdin=subprocess.DEVNULL,
                    stdout=subprocess.DEVNULL,
                    stderr=subprocess.DEVNULL,
                )
                name = string_table(bundle, "en")[title] if title else self.name
                try:
                    # It stands in a tile at first where it is none of those that float.
                    found = wait_until(lambda: [row for row in windows() if row[0] == name], 60)
                    self.assertEqual(found, [(name, True, application)])
                finally:
                    launcher.terminate()
                    launcher.wait()
                    wait_until(lambda: not windows(), 60)
                    subprocess.run(["rm", "-rf", bundle], check=True)

    def test_wayland(self):
        with sway() as compositor:
            self.assert_dialogs(compositor.windows, WAYLAND_DISPLAY=str(compositor.socket))

    def test_x11(self):
        with x_server() as display:
            environment = dict(os.environ, DISPLAY=display)
            settings = write(self.folder / "i3", "# i3 config file (v4)\nfont pango:DejaVu Sans 8\n")
            control = self.folder / "control"
            with open(settings, "a") as file:
                file.write("ipc-socket %s\n" % control)
            quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
            manager = subprocess.Popen(["i3", "-c", settings], env=environment, **quiet)

            def windows():
                tree = subprocess.run(["i3-msg", "-s", control, "-t", "get_tree"], check=True, capture_output=True)
                return windows_of(json.loads(tree.stdout))

            try:
                wait_until(control.exists, 60)
                self.assert_dialogs(windows, DISPLAY=display)
            finally:
                manager.terminate()
                manager.wait()


if __name__ == "__main__":
    unittest.main(verbosity=2)
