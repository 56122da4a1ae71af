# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The packager's commands that look into a package, and the rotation alone."""

import json
import os
import shutil
import subprocess
import unittest

from packager_case import CommandTestCase, scrambled
from support import BUILD, SANITIZED, write


class ListTest(CommandTestCase):
    def make_payload(self):
        write(self.source / "Data/noise", os.urandom(300_000), 0o640)
        os.symlink("noise", self.source / "Data/way")
        os.link(self.source / "Data/noise", self.source / "Data/second name")
        (self.source / "Data/inner").mkdir(mode=0o750)
        for path in self.source.rglob("*"):
            os.utime(path, (1_600_000_000, 1_600_000_000), follow_symlinks=False)

    def test_a_bundle_and_one_file_list_the_same_in_the_order_of_the_archives(self):
        self.make_payload()
        expected = "Info Info/Startup.xml Data Data/inner Data/noise|Data/second name|Data/setup Data/way"
        expected = [name for part in expected.split("|") for name in ([part] if "second" in part else part.split())]
        for name in ("Out.app", "Out.run"):
            listed = self.run_zpkpack("list", self.small_package(name)).stdout.decode()
            self.assertEqual(listed.splitlines(), expected)

    def test_long_lines_tell_mode_size_time_and_target(self):
        self.make_payload()
        lines = self.run_zpkpack("list", "--long", self.small_package("Out.run")).stdout.decode().splitlines()
        rows = {line[44:].split(" ")[0]: line for line in lines}
        time = "2020-09-13 12:26:40"
        self.assertEqual(rows["Data/noise"], f"-rw-r-----       300000 {time} Data/noise")
        self.assertEqual(rows["Data/inner"], f"drwxr-x---            0 {time} Data/inner")
        self.assertTrue(rows["Data/way"].endswith(f"{time} Data/way -> noise"), rows["Data/way"])
        self.assertTrue(rows["Data/second"].endswith(" = Data/noise"), rows["Data/second"])

    def test_json_holds_the_same(self):
        self.make_payload()
        rows = json.loads(self.run_zpkpack("list", "--format", "json", self.small_package("Out.app")).stdout)
        noise = next(row for row in rows if row["name"] == "Data/noise")
        self.assertEqual(
            noise,
            {
                "archive": "Data",
                "name": "Data/noise",
                "type": "file",
                "mode": "0640",
                "size": 300000,
                "modified": "2020-09-13T12:26:40Z",
            },
        )
        self.assertEqual(next(row for row in rows if row["name"] == "Data/way")["target"], "noise")

    def large_package(self):
        write(self.source / "Data/large", "")
        os.truncate(self.source / "Data/large", 1 << 30)
        return self.small_package("Out.app")

    def test_nothing_is_written(self):
        package = self.large_package()
        trace = self.folder / "trace"
        done = subprocess.run(
            ["strace", "-f", "-qq", "-o", trace, "-e", "trace=openat,open,creat,mkdir,mkdirat,rename,memfd_create"]
            + [BUILD / "zpkpack", "list", package],
            capture_output=True,
            # A sanitized program cannot look for leaks while it is traced.
            env=dict(os.environ, ASAN_OPTIONS="detect_leaks=0"),
        )
        self.assertEqual(done.returncode, 0, done.stderr)
        for line in trace.read_text().splitlines():
            self.assertNotRegex(line, "O_WRONLY|O_RDWR|O_CREAT|mkdir|rename|memfd", line)

    @unittest.skipIf(SANITIZED, "the sanitizer takes memory of its own")
    def test_little_is_kept_in_memory(self):
        package = self.large_package()
        peak = self.folder / "peak"
        subprocess.run(
            ["time", "-f", "%M", "-o", peak, BUILD / "zpkpack", "list", package], check=True, stdout=subprocess.DEVNULL
        )
        self.assertLess(int(peak.read_text()), 64 * 1024)

    def test_damage_is_told_after_what_could_be_read(self):
        self.make_payload()
        bundle = self.small_package("Out.app")
        data = bundle / "Contents/Resources/Data.datx"
        whole = data.read_bytes()
        rows = [
            ("cut short", whole[:-1000]),
            ("changed", whole[:150_000] + bytes([whole[150_000] ^ 1]) + whole[150_001:]),
            ("empty", b""),
            ("no archive", b"no archive" * 20_000),
        ]
        for name, contents in rows:
            with self.subTest(name):
                data.write_bytes(contents)
                done = self.run_zpkpack("list", bundle, status=1)
                self.assertIn(b"Info/Startup.xml\n", done.stdout)
                self.assertIn(b"Data.datx: ", done.stderr)
        data.unlink()
        self.assertIn(b"Data.datx: it is missing", self.run_zpkpack("list", bundle, status=1).stderr)
        os.symlink("/etc/passwd", data)
        self.assertIn(b"Data.datx: it is no file", self.run_zpkpack("list", bundle, status=1).stderr)
        data.unlink()
        os.mkfifo(data)
        self.assertIn(b"Data.datx: it is no file", self.run_zpkpack("list", bundle, status=1).stderr)

    def test_what_is_no_package_is_refused(self):
        rows = [self.folder / "missing", "/dev/null", self.source / "Info/Startup.xml", self.source]
        for path in rows:
            with self.subTest(path):
                self.assertNotEqual(self.run_zpkpack("list", path, status=1).stderr, b"")
        one_file = self.small_package("Out.run")
        os.truncate(one_file, one_file.stat().st_size - 1)
        self.assertIn(b"cut short or changed", self.run_zpkpack("list", one_file, status=1).stderr)

    def test_what_is_no_package_is_called_so(self):
        write(self.folder / "notes.txt", "not a package\n")
        write(self.folder / "empty", "")
        for name in ("notes.txt", "empty"):
            for arguments in (["list", name], ["verify", name], ["extract", name, "-o", "made"]):
                done = self.run_zpkpack(*arguments, status=1)
                self.assertEqual(done.stderr.decode(),
                                 f"zpkpack: error: {name}: it is no package, neither a bundle nor one file\n")

    def test_names_cannot_command_the_terminal(self):
        name = "Data/\x1b[2J\u202e\n\x9b1m\udcff"
        bundle = self.hostile_bundle([("Data", 0o040755, b""), (name, 0o100644, b""), (f"{name}l", 0o120777, b"\x1b]0;")])
        for arguments in ([], ["--long"], ["--format", "json"]):
            with self.subTest(arguments):
                done = self.run_zpkpack("list", *arguments, bundle)
                for harmful in (b"\x1b", "\u202e".encode(), "\x9b".encode()):
                    self.assertNotIn(harmful, done.stdout)
        rows = json.loads(done.stdout)
        self.assertEqual(rows[2]["nameBytes"], os.fsencode(name).hex())
        self.assertEqual(rows[3]["target"], "\x1b]0;")


class VerifyTest(CommandTestCase):
    def setUp(self):
        super().setUp()
        write(self.source / "Data/noise", os.urandom(300_000))
        write(self.template / "Contents/Resources/odd\\name\r\nof two lines", "odd")
        write(self.template / "Contents/Resources/plain", "plain")

    def test_what_was_built_is_whole(self):
        for name in ("Out.app", "Out.run"):
            with self.subTest(name):
                done = self.run_zpkpack("verify", self.small_package(name))
                self.assertEqual(done.stdout, b"")
                self.assertIn(b"is as it was built", done.stderr)
                self.assertEqual(self.run_zpkpack("verify", "--quiet", name).stderr, b"")

    def test_the_usual_tool_reads_the_manifest(self):
        bundle = self.small_package("Out.app")
        manifest = (bundle / "Contents/Resources/Manifest.sha256").read_text()
        files = [path for path in bundle.rglob("*") if path.is_file()]
        self.assertEqual(manifest.count("\n"), len(files) - 1)
        check = ["sha256sum", "--check", "--strict", "--quiet", "Contents/Resources/Manifest.sha256"]
        self.assertEqual(subprocess.run(check, cwd=bundle, capture_output=True).returncode, 0)
        write(bundle / "Contents/Resources/odd\\name\r\nof two lines", "changed")
        done = subprocess.run(check, cwd=bundle, capture_output=True)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"odd", done.stdout)

    def test_a_template_brings_no_manifest_of_its_own(self):
        first = self.small_package("First.app")
        self.run_zpkpack("build", self.source, "-o", "Second.app", "--template", first)
        self.assertEqual(self.run_zpkpack("verify", "Second.app").stdout, b"")

    def test_every_change_is_told_by_its_path(self):
        resources = self.small_package("Out.app") / "Contents/Resources"
        write(resources / "plain", "other")
        write(resources / "added\x1b[2J", "")
        (resources / "odd\\name\r\nof two lines").unlink()
        done = self.run_zpkpack("verify", "Out.app", status=1)
        self.assertEqual(
            done.stdout.decode().splitlines(),
            [
                "added: Contents/Resources/added\\x1b[2J",
                "missing: Contents/Resources/odd\\\\name\\x0d\\nof two lines",
                "changed: Contents/Resources/plain",
            ],
        )

    def test_what_was_added_alone_is_no_failure(self):
        write(self.small_package("Out.app") / "Contents/zzz", "")
        self.assertEqual(self.run_zpkpack("verify", "Out.app").stdout, b"added: Contents/zzz\n")

    def test_a_file_in_another_shape_is_missing(self):
        plain = self.small_package("Out.app") / "Contents/Resources/plain"
        plain.rename(plain.with_name("other"))
        os.symlink("other", plain)
        done = self.run_zpkpack("verify", "Out.app", status=1)
        self.assertIn(b"missing: Contents/Resources/plain\n", done.stdout)

    def test_a_damaged_archive_is_told_by_sum_and_by_reading(self):
        data = self.small_package("Out.app") / "Contents/Resources/Data.datx"
        os.truncate(data, data.stat().st_size - 1)
        done = self.run_zpkpack("verify", "Out.app", status=1)
        self.assertEqual(done.stdout, b"changed: Contents/Resources/Data.datx\n")
        self.assertIn(b"Data.datx: ", done.stderr)

    def test_a_package_without_a_sound_manifest_is_told(self):
        manifest = self.small_package("Out.app") / "Contents/Resources/Manifest.sha256"
        line = manifest.read_bytes().splitlines(keepends=True)[0]
        for name, contents in (
            ("text", b"nothing\n"),
            ("no path", line[:66]),
            ("capitals", line.upper()),
            ("escape", b"\\" + line[:66] + b"\\x\n"),
            ("open escape", b"\\" + line[:66] + b"\\"),
            ("zeros", bytes(100_000)),
            ("too large", bytes(17 << 20)),
        ):
            with self.subTest(name):
                manifest.write_bytes(contents)
                self.assertIn(b"Manifest.sha256: ", self.run_zpkpack("verify", "Out.app", status=1).stderr)
        manifest.unlink()
        self.assertIn(b"Manifest.sha256: it is missing", self.run_zpkpack("verify", "Out.app", status=1).stderr)

    def test_one_file_is_whole_or_not(self):
        one_file = self.small_package("Out.run")
        whole = one_file.read_bytes()
        for place in range(0, len(whole), len(whole) // 37):
            changed = bytearray(whole)
            changed[place] ^= 0x40
            write(self.folder / "Changed.run", bytes(changed))
            with self.subTest(place):
                self.run_zpkpack("verify", "Changed.run", status=1)


class ScrambleTest(CommandTestCase):
    def test_rotates_there_and_back(self):
        for size in (0, 1, 102399, 102400, 102401, 300_000):
            with self.subTest(size):
                plain = os.urandom(size)
                write(self.folder / "plain", plain)
                self.run_zpkpack("scramble", "plain", "made")
                self.assertEqual((self.folder / "made").read_bytes(), scrambled(plain))
                self.run_zpkpack("unscramble", "made", "back")
                self.assertEqual((self.folder / "back").read_bytes(), plain)
                (self.folder / "made").unlink()
                (self.folder / "back").unlink()

    def test_a_file_that_is_there_stays_unless_forced(self):
        write(self.folder / "plain", b"a" * 200_000)
        write(self.folder / "made", "mine")
        self.assertIn(b"--force", self.run_zpkpack("scramble", "plain", "made", status=1).stderr)
        self.assertEqual((self.folder / "made").read_text(), "mine")
        self.run_zpkpack("scramble", "plain", "made", "--force")
        self.assertEqual((self.folder / "made").stat().st_size, 200_000)

    def test_a_file_can_take_its_own_place(self):
        plain = os.urandom(200_000)
        write(self.folder / "file", plain)
        self.run_zpkpack("scramble", "file", "file", "--force")
        self.assertEqual((self.folder / "file").read_bytes(), scrambled(plain))

    def test_a_failure_leaves_nothing(self):
        os.mkfifo(self.folder / "pipe")
        for source in ("missing", self.source, "pipe"):
            for command in ("scramble", "unscramble"):
                with self.subTest(source=source, command=command):
                    self.assertNotEqual(self.run_zpkpack(command, source, "made", status=1).stderr, b"")
                    self.assertFalse(os.path.lexists(self.folder / "made"))
        self.run_zpkpack("scramble", self.source / "Data/setup", "no/such/folder/made", status=1)

    @unittest.skipUnless(shutil.which("prlimit"), "there is no prlimit")
    def test_too_large_a_file_is_told(self):
        write(self.folder / "plain", b"a" * 300_000)
        done = subprocess.run(
            ["prlimit", "--fsize=200000", BUILD / "zpkpack", "scramble", "plain", "made"],
            cwd=self.folder,
            capture_output=True,
        )
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"File too large", done.stderr)
        self.assertFalse((self.folder / "made").exists())
        self.assertEqual(list(self.folder.glob(".zpk-*")), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
