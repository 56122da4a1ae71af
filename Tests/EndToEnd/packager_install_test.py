# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The packager as it is installed: where its parts are, its manual pages, its completions in real shells."""

import functools
import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import tempfile
import unittest

from packager_case import CommandTestCase
from support import BUILD, write

NOBODY = 65534
PAGES = BUILD / "Pages"
COMMANDS = re.findall(
    r"^  (\w+)  ", subprocess.run([BUILD / "zpkpack", "--help"], capture_output=True, text=True).stdout, re.M
)


@functools.cache
def help_of(command):
    return subprocess.run([BUILD / "zpkpack", command, "--help"], capture_output=True, text=True, check=True).stdout


def options_of(command):
    return set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", re.sub(r"Example:.*", "", help_of(command), flags=re.S)))


class InstallTest(CommandTestCase):
    def setUp(self):
        super().setUp()
        os.chmod(self.folder, 0o755)
        subprocess.run(
            self.installation(),
            env={**os.environ, "DESTDIR": str(self.folder / "stage")},
            check=True,
            capture_output=True,
        )
        self.prefix = self.folder / "stage/opt/kit"

    def installation(self):
        if os.access(BUILD, os.W_OK):
            return ["cmake", "--install", BUILD, "--prefix", "/opt/kit"]
        # It notes in the build folder what it has installed; who may not write there notes it elsewhere.
        script = (BUILD / "cmake_install.cmake").read_text()
        self.assertEqual(script.count(f'file(WRITE "{BUILD}/'), 1)
        own = write(self.folder / "install.cmake", script.replace(f'file(WRITE "{BUILD}/', f'file(WRITE "{self.folder}/'))
        return ["cmake", "-DCMAKE_INSTALL_PREFIX=/opt/kit", "-P", own]

    def test_everything_is_in_its_place(self):
        for path in (
            "bin/zpkpack",
            "lib/zephyrkit/zephyrkit-run",
            "lib/zephyrkit/zephyrkit-draw",
            "lib/zephyrkit/Zephyrkit.app/Contents/Linux/Zephyrkit",
            "lib/zephyrkit/Zephyrkit.app/Contents/Helpers/ditto",
            "share/zephyrkit/UILang/en/ZPKStringTable.def",
            "share/man/man1/zpkpack.1",
            "share/bash-completion/completions/zpkpack",
            "share/zsh/site-functions/_zpkpack",
            "share/fish/vendor_completions.d/zpkpack.fish",
            "share/doc/zephyrkit/LICENSE",
            "share/doc/zephyrkit/libQt6Svg.so.6.copyright",
            "share/doc/zephyrkit/Docs/Packages.md",
            *(f"share/doc/zephyrkit/Docs/schemas/{name}.schema.json" for name in ("check", "list", "strings")),
            *(f"share/man/man1/zpkpack-{command}.1" for command in COMMANDS),
        ):
            self.assertTrue((self.prefix / path).is_file(), path)
        self.assertEqual(os.listdir(self.folder / "stage"), ["opt"])
        for path in ("bin/zpkpack", "lib/zephyrkit/zephyrkit-run"):
            self.assertEqual((self.prefix / path).stat().st_mode & 0o777, 0o755, path)
        installed = self.tree(self.prefix / "lib/zephyrkit/Zephyrkit.app")
        self.assertEqual(installed, self.tree(BUILD / "Zephyrkit.app"))

    def test_an_ordinary_user_makes_packages_with_it_wherever_it_was_moved(self):
        moved = self.folder / "moved elsewhere"
        os.rename(self.prefix, moved)
        os.makedirs(self.folder / "bin")
        os.symlink(moved / "bin/zpkpack", self.folder / "bin/zpkpack")
        # Read-only, as where only the administrator installs.
        subprocess.run(["chmod", "-R", "a-w", moved], check=True)
        self.addCleanup(subprocess.run, ["chmod", "-R", "u+w", moved], check=True)
        work = self.folder / "work"
        work.mkdir()
        person = {}
        if os.getuid() == 0:
            os.chown(work, NOBODY, NOBODY)
            person = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
        (work / "tmp").mkdir(mode=0o700)
        if person:
            os.chown(work / "tmp", NOBODY, NOBODY)
        environment = {"PATH": f"{self.folder}/bin:/usr/bin:/bin", "HOME": str(work), "TMPDIR": str(work / "tmp")}

        def run(*command):
            done = subprocess.run(
                command, cwd=work, env=environment, capture_output=True, text=True, timeout=300, **person
            )
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            return done.stdout

        run("zpkpack", "new", "HelloSetup")
        # A picture is made of it.
        write(work / "HelloSetup/Icon.svg", '<svg viewBox="0 0 9 9"><circle cx="4" cy="4" r="4"/></svg>', 0o644)
        self.assertEqual(run("zpkpack", "check", "--strict", "HelloSetup"), "")
        for package, program, options in (
            ("Out.app", "Out.app/Contents/Linux/Zephyrkit", []),
            ("Out.run", "Out.run", ["--without-windows"]),
        ):
            run("zpkpack", "build", "HelloSetup", "-o", package, *options)
            self.assertIn("Hello!", run(work / program))
        self.assertTrue((work / "Out.app/Contents/Resources/Icon.png").read_bytes().startswith(b"\x89PNG"))
        # Folders that nobody may write to were copied as they are.
        subprocess.run(["chmod", "-R", "u+w", work / "Out.app"], check=True)
        shutil.rmtree(work / "Out.app")


class ManualPagesTest(unittest.TestCase):
    def test_no_formatter_has_anything_to_say(self):
        pages = sorted((PAGES / "man/man1").iterdir())
        self.assertEqual([page.name for page in pages],
                         sorted(["zpkpack.1", *(f"zpkpack-{command}.1" for command in COMMANDS)]))
        for page in pages:
            for command in (
                ["mandoc", "-T", "lint", "-W", "warning", page],
                ["groff", "-ww", "-z", "-man", "-K", "utf8", "-T", "utf8", page],
            ):
                done = subprocess.run(command, capture_output=True, text=True, timeout=60)
                self.assertEqual((done.returncode, done.stdout + done.stderr), (0, ""), page)

    def test_pages_say_what_the_help_says(self):
        for command in COMMANDS:
            page = subprocess.run(
                ["mandoc", "-T", "utf8", "-O", "width=200", PAGES / f"man/man1/zpkpack-{command}.1"],
                capture_output=True,
                text=True,
                check=True,
            ).stdout
            page = re.sub(".\b", "", page)
            options = set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", page.split("\nOPTIONS\n")[1].split("\nEXIT")[0]))
            self.assertLessEqual(options_of(command), options, command)
            self.assertIn(help_of(command).split("\n")[0], page)
            self.assertIn(help_of(command).split("Example:\n")[1].strip(), page)
        listed = (PAGES / "man/man1/zpkpack.1").read_text()
        for command in COMMANDS:
            self.assertIn(f"\\fB{command}\\fR", listed)


class CompletionTest(unittest.TestCase):
    """What a person gets who presses the tabulator key."""

    # What was typed, and the words of the command line that comes of it.
    ROWS = [
        ("zpkpack bui", ["build"]),
        ("zpkpack str", ["strings"]),
        ("zpkpack check --str", ["check", "--strict"]),
        ("zpkpack list --format j", ["list", "--format", "json"]),
        ("zpkpack check --format=sa", ["check", "--format=sarif"]),
        ("zpkpack check --explain key-m", ["check", "--explain", "key-missing"]),
        ("zpkpack build Some", ["build", "Some folder/"]),
        ("zpkpack verify Hel", ["verify", "Hello.run"]),
        ("zpkpack build --template Some", ["build", "--template", "Some folder/"]),
        ("zpkpack -q unsc", ["-q", "unscramble"]),
        ("zpkpack nothing x", ["nothing", "x"]),
    ]

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-completion-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        (self.folder / "Some folder").mkdir()
        (self.folder / "Some file").touch()
        (self.folder / "Hello.run").touch()

    def typed(self, shell, arguments, rows):
        """What the program gets of each line, typed at a terminal with a tabulator at its end."""
        parent, child = pty.openpty()
        process = subprocess.Popen(
            [shell, *arguments],
            stdin=child,
            stdout=child,
            stderr=child,
            cwd=self.folder,
            env={"PATH": os.environ["PATH"], "TERM": "dumb", "HOME": str(self.folder), "LC_ALL": "C.UTF-8"},
            start_new_session=True,
        )
        os.close(child)
        seen = b""

        def wait_for(text):
            nonlocal seen
            while text not in seen:
                if not select.select([parent], [], [], 60)[0]:
                    self.fail(seen)
                seen += os.read(parent, 65536)

        try:
            os.write(parent, b"echo rea''dy\n")
            wait_for(b"ready\r\n")
            for number, (line, _) in enumerate(rows, 1):
                os.write(parent, line.encode() + b"\t")
                os.write(parent, b"\n")
                wait_for(b"<%d>" % number)
        finally:
            process.kill()
            process.wait()
            os.close(parent)
        return [
            re.findall(r"\[(.*?)\]", row) for row in re.findall(r"WORDS(.*)<\d+>", seen.decode(errors="replace"))
        ]

    def write_program(self, setup):
        """Settings of a shell in which the program tells its words."""
        path = self.folder / "settings"
        path.write_text(
            setup + "count=0\nzpkpack() { count=$((count + 1)); printf 'WOR''DS'; printf '[%s]' \"$@\"; "
            "printf '<%s>\\n' \"$count\"; }\n"
        )
        return path

    def check(self, answers):
        self.assertEqual(list(zip([line for line, _ in self.ROWS], answers)), self.ROWS)

    def test_bash(self):
        settings = self.write_program(
            "bind 'set bell-style none' 'set enable-bracketed-paste off' 2>/dev/null\n"
            f"source '{PAGES}/completions/zpkpack.bash'\n"
        )
        self.check(self.typed("bash", ["--noprofile", "--rcfile", str(settings), "-i"], self.ROWS))

    def test_zsh(self):
        settings = self.write_program(
            f"fpath=('{PAGES}/completions' $fpath)\nautoload -Uz compinit\ncompinit -u -D\n"
            "setopt no_beep no_prompt_cr no_prompt_sp no_auto_remove_slash\n"
        )
        os.rename(settings, self.folder / ".zshrc")
        self.check(self.typed("zsh", ["-i"], self.ROWS))

    def test_fish(self):
        script = PAGES / "completions/zpkpack.fish"
        for line, words in self.ROWS:
            done = subprocess.run(
                ["fish", "--no-config", "-c", f"source '{script}'; complete -C '{line}'"],
                capture_output=True,
                text=True,
                cwd=self.folder,
                timeout=60,
                env={"PATH": os.environ["PATH"], "HOME": str(self.folder), "LC_ALL": "C.UTF-8"},
            )
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            offered = [each.split("\t")[0] for each in done.stdout.splitlines()]
            if words[0] == "nothing":
                self.assertEqual(offered, [])
            else:
                self.assertIn(words[-1], [each.replace("\\ ", " ") for each in offered], line)

    def test_every_option_of_every_command_is_offered(self):
        for command in COMMANDS:
            for shell in ("bash", "fish"):
                script = PAGES / f"completions/zpkpack.{shell}"
                if shell == "bash":
                    call = (
                        f"compopt() {{ :; }}; source '{script}'; COMP_WORDS=(zpkpack {command} --); COMP_CWORD=2; "
                        "_zpkpack; printf '%s\\n' \"${COMPREPLY[@]}\""
                    )
                else:
                    call = f"source '{script}'; complete -C 'zpkpack {command} --'"
                done = subprocess.run(
                    [shell, "-c", call], capture_output=True, text=True, cwd=self.folder, timeout=60, check=True,
                    env={"PATH": os.environ["PATH"], "HOME": str(self.folder)},
                )
                offered = {line.split("\t")[0] for line in done.stdout.splitlines()}
                wanted = {option for option in options_of(command) if option.startswith("--")}
                self.assertEqual(offered, wanted, (command, shell))

    def test_the_script_for_bash_is_sound(self):
        done = subprocess.run(
            ["shellcheck", "-s", "bash", PAGES / "completions/zpkpack.bash"], capture_output=True, text=True
        )
        self.assertEqual((done.returncode, done.stdout), (0, ""))


if __name__ == "__main__":
    unittest.main(verbosity=2)
