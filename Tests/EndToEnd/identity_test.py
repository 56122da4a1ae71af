#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the desktop and people know a package's windows by."""

import re
import shutil
import unittest

from compositors import weston
from support import TEMPLATE, PackageTestCase, png_picture, write
from windows import items, walk
from windows_case import WindowTestCase

BLACK = 0xFF000000


class IdentityTest(WindowTestCase):
    def name_package(self):
        with open(self.source / "Package.strings", "a") as file:
            file.write('"CFBundleDisplayName" = "Acme & Sons [*] Suite";\n')
        shutil.copytree(TEMPLATE / "Contents/Resources/UILang", self.source / "UILang")
        write(self.source / "UILang/ja/InfoPlist.strings", '"CFBundleDisplayName" = "アクミ";\n')

    def icons(self, window):
        """The pictures of the window, by their side: the colours of each."""
        shown = self.desktop.run("xprop", "-id", window, "-notype", "-f", "_NET_WM_ICON", "32x", "_NET_WM_ICON")
        numbers = [int(number, 16) for number in re.findall(r"0x[0-9a-f]+", shown.partition("=")[2])]
        found = {}
        while numbers:
            width, height = numbers[:2]
            self.assertEqual(width, height)
            found[width] = set(numbers[2 : 2 + width * height])
            del numbers[: 2 + width * height]
        return found

    def icons_of_a_run(self, **variables):
        bundle = self.package()
        gate = self.hold(bundle, "Data.dat")
        run = self.start(bundle, **variables)
        gate.wait_reached()
        run.window(run.texts["FILE_EXTRACT"])
        (window,) = self.desktop.listed()
        found = self.icons(window)
        self.assertEqual(self.desktop.about(window)[0], run.texts["FILE_EXTRACT"])
        gate.open()
        run.wait()
        return found

    def test_own_picture(self):
        write(self.source / "Icon.png", png_picture(256, 256))
        found = self.icons_of_a_run()
        self.assertEqual(sorted(found), [16, 22, 24, 32, 48, 64, 96, 128])
        self.assertEqual(set().union(*found.values()), {BLACK})

    def test_a_picture_where_the_package_has_none(self):
        for damaged in (None, b"", b"GIF89a", png_picture(256, 256)[:60], png_picture(1025, 1025)):
            with self.subTest(damaged=damaged):
                bundle = self.package()
                if damaged is not None:
                    write(bundle / "Contents/Resources/Icon.png", damaged)
                gate = self.hold(bundle, "Data.dat")
                run = self.start(bundle)
                gate.wait_reached()
                run.window(run.texts["FILE_EXTRACT"])
                (window,) = self.desktop.listed()
                found = self.icons(window)
                self.assertGreater(len(found[32]), 3)
                gate.open()
                run.wait()
                shutil.rmtree(bundle)

    def test_the_desktops_own_picture_where_the_package_has_none(self):
        """That of the theme which all desktops share."""
        shared = self.folder / "data/icons/hicolor"
        write(shared / "32x32/apps/system-software-install.png", png_picture(32, 32))
        write(shared / "index.theme", "[Icon Theme]\nName=Hicolor\nDirectories=32x32/apps\n[32x32/apps]\nSize=32\n")
        found = self.icons_of_a_run(XDG_DATA_HOME=str(self.folder / "data"))
        self.assertEqual(set().union(*found.values()), {BLACK})

    def test_names_in_alerts_and_the_menu(self):
        self.name_package()
        for language, name in (("en", "Acme & Sons [*] Suite"), ("ja", "アクミ")):
            bundle = self.package('<UIMLog Signature="never"/>')
            run = self.start_in(language, bundle)
            run.window(name, "alert")
            self.desktop.key("Return")
            run.wait()
            shutil.rmtree(bundle)

    def test_menu(self):
        self.name_package()
        run = self.start_in("ja", self.package('<Disc FilePath="Setup.bin"/>'))
        (bar,) = items(run.disc_window(), "menu bar")
        names = [item["name"] for item in walk(bar)]
        self.assertIn("アクミ", names)
        self.assertIn("アクミについて", names)
        self.assertFalse([name for name in names if "Zephyrkit" in name])
        self.desktop.key("Escape")
        run.wait()


class WaylandIdentityTest(PackageTestCase):
    def test_application(self):
        self.recorder()
        self.startup()
        bundle = self.pack()
        with weston() as compositor:
            done = self.launch(bundle, WAYLAND_DISPLAY=str(compositor.socket), WAYLAND_DEBUG="1")
        self.record()
        self.assertRegex(done.stderr, r'-> xdg_toplevel@\d+\.set_app_id\("com\.example\.%s"\)' % self.name)
        self.assertRegex(done.stderr, r'-> xdg_toplevel@\d+\.set_title\("Extracting installation files…"\)')


if __name__ == "__main__":
    unittest.main(verbosity=2)
