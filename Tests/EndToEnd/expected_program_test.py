# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What the desktop is told of the setup program's start, and what of that the program finds."""

import re
import shlex
import subprocess
import unittest

from compositors import sway, weston
from support import PackageTestCase, wait_until, write, x_server
from windows_case import WindowTestCase

NAME = r'Acme "Suite" \\ 4'


def same_but(case, record, expected, *names):
    """The environment is the launcher's own but for those names, and for what interpreters set."""
    found = dict(record["environment"])
    for name in ("LC_CTYPE", "_", *names):
        found.pop(name, None)
        expected.pop(name, None)
    case.assertEqual(found, expected)


class X11ExpectedProgramTest(WindowTestCase):
    """Under a window manager that speaks the startup notification protocol."""

    def setUp(self):
        super().setUp()
        with open(self.source / "Package.strings", "a") as file:
            file.write('"CFBundleDisplayName" = "%s";\n' % NAME.replace("\\", "\\\\").replace('"', '\\"'))
        self.log = self.folder / "messages"
        self.listen("root_listener.py", self.log)

    def lines(self):
        return self.log.read_text().splitlines()

    def messages(self, **variables):
        """All that were sent until now: the kind of each, and its values by their names."""
        subprocess.run(["xprop", "-root", "-f", "ZPK_END", "32c", "-set", "ZPK_END", "1"], check=True,
                       env={**self.desktop.environment, **variables})
        wait_until(lambda: "ZPK_END" in self.lines(), 60)
        said = [re.fullmatch("(new|change|remove): (.*)", line) for line in self.lines()]
        return [(line[1], dict(word.split("=", 1) for word in shlex.split(line[2]))) for line in said if line]

    def test_desktop_expects_the_setup_program_until_its_end(self):
        bundle = self.package()
        for variables in ({"DESKTOP_STARTUP_ID": None}, {"DESKTOP_STARTUP_ID": "before_TIME1", "MARK": "a b"}):
            with self.subTest(variables=variables):
                write(self.log, "")
                self.record_path.unlink(missing_ok=True)
                run = self.start(bundle, **variables)
                run.wait()
                record = self.record()
                given = record["environment"]["DESKTOP_STARTUP_ID"]
                self.assertRegex(given, r"^\S+_TIME[0-9]+$")
                same_but(self, record, self.environment(**self.desktop.variables, **variables), "DESKTOP_STARTUP_ID")
                said = self.messages()
                # The launcher's own start is over as soon as its window is there.
                own = variables["DESKTOP_STARTUP_ID"]
                self.assertEqual([row for row in said if row[1]["ID"] != given], [("remove", {"ID": own})] * bool(own))
                mine = [row for row in said if row[1]["ID"] == given]
                self.assertEqual([kind for kind, _ in mine], ["new", "remove"])
                self.assertEqual(
                    mine[0][1],
                    {"ID": given, "NAME": NAME, "SCREEN": "0", "BIN": record["program"], "WMCLASS": "setup"},
                )

    def test_program_that_cannot_start_is_not_expected_any_more(self):
        self.startup()
        write(self.source / "Data/setup", "", 0o755)
        run = self.start(self.pack())
        run.window(NAME, "alert")
        said = self.messages()
        self.assertEqual([kind for kind, _ in said], ["new", "remove"])
        self.assertEqual(said[0][1]["ID"], said[1][1]["ID"])
        self.desktop.key("Return")
        run.process.wait(timeout=60)

    def test_desktop_expects_no_program_that_there_is_not(self):
        write(self.source / "Data/readme", "no program")
        self.start(self.pack()).wait()
        self.assertEqual(self.messages(), [])

    def test_desktop_that_does_not_speak_of_starts_is_told_nothing(self):
        with x_server() as display:
            self.log = self.folder / "messages without a window manager"
            self.listen("root_listener.py", self.log, DISPLAY=display)
            self.start(self.package(), DISPLAY=display).wait()
            self.assertEqual(self.messages(DISPLAY=display), [])
            same_but(self, self.record(), self.environment(**{**self.desktop.variables, "DISPLAY": display}))


class WaylandExpectedProgramTest(PackageTestCase):
    def launch_at(self, compositor, **variables):
        variables = {"WAYLAND_DISPLAY": str(compositor.socket), **variables}
        done = self.launch(self.simple_package(), **variables)
        self.assertNotIn("no windows", done.stderr)
        return self.record(), self.environment(**variables)

    def test_compositor_that_gives_tokens(self):
        for variables, names in (
            ({"XDG_ACTIVATION_TOKEN": "before"}, ["XDG_ACTIVATION_TOKEN"]),
            ({"DISPLAY": ":no-such"}, ["XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"]),
        ):
            with self.subTest(variables=variables), sway() as compositor:
                record, expected = self.launch_at(compositor, **variables)
                tokens = re.findall(r'xdg_activation_token_v1@\d+\.done\("(\S+)"\)', compositor.log())
                self.assertEqual([record["environment"][name] for name in names], tokens * len(names))
                same_but(self, record, expected, *names)
            self.record_path.unlink()
            subprocess.run(["rm", "-rf", self.folder / "TestSetup.app"], check=True)

    def test_compositor_named_as_it_is_in_the_runtime_folder(self):
        with sway() as compositor:
            (self.folder / "runtime/wayland-test").symlink_to(compositor.socket)
            record, expected = self.launch_at(compositor, WAYLAND_DISPLAY="wayland-test")
            self.assertIn('.done("%s")' % record["environment"]["XDG_ACTIVATION_TOKEN"], compositor.log())
            same_but(self, record, expected, "XDG_ACTIVATION_TOKEN")

    def test_own_start_is_over(self):
        with sway() as compositor:
            self.launch_at(compositor, XDG_ACTIVATION_TOKEN="given-to-the-launcher")
            self.assertIn('.activate("given-to-the-launcher", ', compositor.log())

    def test_compositor_without_tokens(self):
        with weston() as compositor:
            record, expected = self.launch_at(compositor, XDG_ACTIVATION_TOKEN="before")
            same_but(self, record, expected)


if __name__ == "__main__":
    unittest.main(verbosity=2)
