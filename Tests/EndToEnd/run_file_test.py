# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Packages of one file: placed, started, and gone again, however they end."""

import os
import pathlib
import resource
import shutil
import signal
import subprocess
import tempfile
import unittest

from support import (BUILD, TEMPLATE, PackageTestCase, has_taken_signals, light_template, peak_memory_of, wait_until,
                     write, x_server)

SLOW_SETUP = """#!/bin/sh
echo $$ >> "$ZPK_TEST_RECORD"
exec sleep 600
"""


class RunFileTestCase(PackageTestCase):
    def run_file(self, name="TestSetup.run"):
        self.recorder()
        self.startup()
        return self.pack(name, "--without-windows")

    def slow_run_file(self):
        """One whose setup program stays until it is killed."""
        write(self.source / "Data/setup", SLOW_SETUP, 0o755)
        self.startup()
        return self.pack("TestSetup.run", "--without-windows")

    def start(self, path, *arguments, settings=None, **env):
        process = subprocess.Popen(
            [path, *arguments],
            **dict(
                dict(
                    env=self.environment(**env),
                    stdin=subprocess.DEVNULL,
                    stdout=subprocess.PIPE,
                    stderr=subprocess.PIPE,
                    text=True,
                    errors="surrogateescape",
                    cwd=self.folder,
                ),
                **(settings or {}),
            ),
        )
        self.addCleanup(self.end, process)
        return process

    def end(self, process):
        if process.poll() is None:
            process.kill()
        process.wait()
        for stream in (process.stdout, process.stderr):
            if stream is not None:
                stream.close()

    def finish(self, process, expect=0):
        out, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, expect, out + err)
        # The watcher removes the bundle once the launcher has ended.
        wait_until(lambda: not os.listdir(self.temporary), 60)
        return out, err

    def running_setup(self):
        """The process of the slow setup program, which ends with the test."""

        def words():
            return self.record_path.exists() and self.record_path.read_text().strip()

        setup = int(wait_until(words, 60))
        self.addCleanup(lambda: os.path.exists("/proc/%d" % setup) and os.kill(setup, signal.SIGKILL))
        return setup

    def watcher_of(self, process):
        """The process that removes the bundle when that one is gone."""
        children = pathlib.Path("/proc/%d/task/%d/children" % (process.pid, process.pid)).read_text().split()
        names = {child: pathlib.Path("/proc/%s/comm" % child).read_text().strip() for child in children}
        return int(next(child for child, name in names.items() if name == "zephyrkit-watch"))

    def placed_folders(self):
        return sorted(pathlib.Path(self.temporary).glob("zephyrkit-run-*"))


class RunFileTest(RunFileTestCase):
    def test_installs_and_leaves_nothing(self):
        out, _ = self.finish(self.start(self.run_file()))
        self.assertIn("recorder: ran", out)
        self.assertEqual(self.record()["arguments"], ["--test"])

    def test_setup_program_finds_environment_and_folder_as_they_were(self):
        expected = self.environment(MARK="a b")
        self.finish(self.start(self.run_file(), MARK="a b"))
        environment = self.record()["environment"]
        for own in ("LC_CTYPE", "_"):
            environment.pop(own, None)
            expected.pop(own, None)
        self.assertEqual(environment, expected)
        self.assertEqual(self.record()["folder"], str(self.folder))
        self.assertLessEqual(len(self.record()["descriptors"]), 4)

    def test_arguments_are_passed_over(self):
        self.finish(self.start(self.run_file(), "--help", "-x", "", "a b"))
        self.assertEqual(self.record()["arguments"], ["--test"])

    def test_names_of_any_kind(self):
        path = self.run_file()
        for name in ("a b.run", "a:b;c.run", "$LIB.run", "a\nb.run", os.fsdecode(b"\xff.run")):
            with self.subTest(name=name):
                other = self.folder / name
                os.rename(path, other)
                self.finish(self.start(other))
                path = other

    def test_bundle_goes_when_the_launcher_is_killed(self):
        process = self.start(self.slow_run_file())
        setup = self.running_setup()
        self.assertEqual(len(self.placed_folders()), 1)
        process.kill()
        # Its streams stay open: the setup program has them, too.
        self.assertEqual(process.wait(), -signal.SIGKILL)
        wait_until(lambda: not self.placed_folders(), 60)
        self.assertTrue(os.path.exists("/proc/%d" % setup))

    def test_folder_that_was_left_behind_goes_at_the_next_start(self):
        abandoned = self.temporary / "zephyrkit-run-1-0"
        write(abandoned / "A.app/Contents/x", "x")
        abandoned.chmod(0o700)
        self.finish(self.start(self.run_file()))

    def test_folder_in_use_stays_at_another_start(self):
        process = self.start(self.slow_run_file())
        setup = self.running_setup()
        first = self.placed_folders()
        # The same package again: a second run ends in silence. One that took the first one's bundle away
        # would not see it, and install.
        second = self.start(self.folder / "TestSetup.run")
        out, _ = second.communicate(timeout=60)
        self.assertEqual((second.returncode, out), (0, ""))
        wait_until(lambda: self.placed_folders() == first, 60)
        self.assertTrue((first[0] / "TestSetup.app/Contents/Info.plist").exists())
        os.kill(setup, signal.SIGKILL)
        self.finish(process)

    def test_reader_of_the_output_does_not_wait_for_the_watcher(self):
        process = self.start(self.slow_run_file())
        setup = self.running_setup()
        watcher = self.watcher_of(process)
        # It could not let go of anything now.
        os.kill(watcher, signal.SIGSTOP)
        try:
            os.kill(setup, signal.SIGKILL)
            process.communicate(timeout=60)
            self.assertEqual(len(self.placed_folders()), 1)
        finally:
            os.kill(watcher, signal.SIGCONT)
        self.finish(process)


class RunFileEndsTest(RunFileTestCase):
    """However launcher and watcher end, the bundle goes, at the latest with the next start."""

    def test_status_of_the_launcher_is_passed_on(self):
        write(self.source / "Data/setup", "#!/no/such/program\n", 0o755)
        self.startup()
        _, err = self.finish(self.start(self.pack("TestSetup.run", "--without-windows")), expect=1)
        self.assertIn("/no/such/program", err)

    def test_signals_reach_the_launcher(self):
        path = self.slow_run_file()
        for number in (signal.SIGABRT, signal.SIGSEGV):
            with self.subTest(number):
                process = self.start(path)
                setup = self.running_setup()
                process.send_signal(number)
                self.assertEqual(process.wait(60), -number)
                wait_until(lambda: not self.placed_folders(), 60)
                os.kill(setup, signal.SIGKILL)
                self.record_path.unlink()

    def test_asked_to_end_while_setup_runs_the_launcher_waits_on(self):
        path = self.slow_run_file()
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                process = self.start(path)
                setup = self.running_setup()
                process.send_signal(number)
                wait_until(lambda: has_taken_signals(process.pid), 60)
                self.assertEqual(len(self.placed_folders()), 1)
                os.kill(setup, signal.SIGKILL)
                self.assertEqual(process.wait(60), 0)
                wait_until(lambda: not self.placed_folders(), 60)
                self.record_path.unlink()

    def test_without_its_watcher_the_bundle_stays_until_the_next_start(self):
        path = self.slow_run_file()
        process = self.start(path)
        setup = self.running_setup()
        os.kill(self.watcher_of(process), signal.SIGKILL)
        os.kill(setup, signal.SIGKILL)
        self.assertEqual(process.wait(60), 0)
        self.assertEqual(len(self.placed_folders()), 1)
        self.record_path.unlink()
        self.finish(self.start(self.run_file("Another.run")))

    def test_all_are_killed_at_once(self):
        process = self.start(self.slow_run_file())
        setup = self.running_setup()
        for victim in (self.watcher_of(process), process.pid, setup):
            os.kill(victim, signal.SIGKILL)
        process.wait(60)
        self.assertEqual(len(self.placed_folders()), 1)
        shutil.rmtree(self.temporary / "VarnoZPK_TEMP", ignore_errors=True)
        self.record_path.unlink()
        self.finish(self.start(self.run_file("Another.run")))


class RunFilePlacesTest(RunFileTestCase):
    """Wherever the file lies, and whatever it is started with."""

    @unittest.skipUnless(os.geteuid() == 0, "only root can mount")
    def test_temporary_folder_without_programs_is_passed_over(self):
        path = self.run_file()
        cache = self.folder / "cache"
        cache.mkdir(mode=0o700)
        with self.disk("noexec,mode=0700") as place:
            self.finish(self.start(path, TMPDIR=str(place), XDG_CACHE_HOME=str(cache)))
            self.assertEqual(os.listdir(place), [])
        self.assertTrue(self.record()["staging"].startswith(str(cache)))
        wait_until(lambda: not os.listdir(cache), 60)

    @unittest.skipUnless(os.geteuid() == 0, "only root can mount")
    def test_file_system_that_may_only_be_read(self):
        path = self.run_file()
        with self.disk("mode=0755") as place:
            shutil.copy(path, place)
            subprocess.run(["mount", "-o", "remount,ro", place], check=True)
            self.finish(self.start(place / path.name))
        self.record()

    def test_through_a_link(self):
        path = self.run_file()
        link = self.folder / "link"
        link.symlink_to(path)
        self.finish(self.start(link))
        self.record()

    def start_without_streams(self, path):
        def close_streams():
            for stream in (0, 1, 2):
                os.close(stream)

        return self.start(path, settings=dict(preexec_fn=close_streams, stdin=None, stdout=None, stderr=None))

    def test_without_streams(self):
        self.assertEqual(self.start_without_streams(self.run_file()).wait(60), 0)
        wait_until(lambda: not os.listdir(self.temporary), 60)
        self.assertEqual(self.record()["arguments"], ["--test"])

    def test_without_streams_the_bundle_in_use_stays_at_another_start(self):
        process = self.start_without_streams(self.slow_run_file())
        setup = self.running_setup()
        first = self.placed_folders()
        self.describe_package(self.name + "2")
        self.start(self.run_file("Another.run")).communicate(timeout=60)
        wait_until(lambda: len(self.placed_folders()) < 2, 60)
        self.assertEqual(self.placed_folders(), first)
        os.kill(setup, signal.SIGKILL)
        self.assertEqual(process.wait(60), 0)
        wait_until(lambda: not os.listdir(self.temporary), 60)

    def test_few_descriptors(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_NOFILE, (16, 16))

        self.finish(self.start(self.run_file(), settings=dict(preexec_fn=limit)))
        self.record()

    def test_many_starts_at_once(self):
        path = self.slow_run_file()
        started = [self.start(path) for _ in range(32)]
        wait_until(lambda: sum(process.poll() is not None for process in started) == 31, 120)
        setup = self.running_setup()
        first = next(process for process in started if process.poll() is None)
        for process in started:
            if process is not first:
                out, err = process.communicate(timeout=60)
                self.assertEqual((process.returncode, out), (0, ""), err)
        self.assertEqual(self.record_path.read_text().split(), [str(setup)])
        os.kill(setup, signal.SIGKILL)
        self.finish(first)


CARRIED = TEMPLATE / "Contents/Frameworks"


@unittest.skipUnless(CARRIED.is_dir(), "this build shares the machine's libraries")
class WindowsRunFileTest(RunFileTestCase):
    """With windows the launcher becomes its second stage, whose program is the loader that was placed."""

    made = None
    memory = 0

    @classmethod
    def tearDownClass(cls):
        if cls.made is not None:
            shutil.rmtree(cls.made.parent)

    def run_file(self, name="TestSetup.run"):
        """Made once: it takes the packager long."""
        if WindowsRunFileTest.made is None:
            write(self.source / "Data/setup", SLOW_SETUP, 0o755)
            self.startup()
            WindowsRunFileTest.made = pathlib.Path(tempfile.mkdtemp(prefix="zpk-run-")) / name
            status, WindowsRunFileTest.memory = peak_memory_of(
                [BUILD / "zpkpack", "build", self.source, "-o", WindowsRunFileTest.made, "--template",
                 light_template(), "--frameworks", CARRIED])
            self.assertEqual(status, 0)
        return WindowsRunFileTest.made

    def test_size(self):
        self.assertLessEqual(self.run_file().stat().st_size, 18_000_000)

    def test_memory_that_packing_takes(self):
        self.run_file()
        self.assertLess(self.memory, 64 << 20)

    def test_bundle_stays_for_the_second_stage_and_goes_with_it(self):
        for is_killed in (False, True):
            with self.subTest(is_killed), x_server() as display:
                process = self.start(self.run_file(), DISPLAY=display)
                setup = self.running_setup()
                placed = self.placed_folders()
                self.assertEqual(len(placed), 1)
                program = pathlib.Path(os.readlink("/proc/%d/exe" % process.pid))
                self.assertEqual(program.parent, placed[0] / "TestSetup.app/Contents/Frameworks")
                if is_killed:
                    process.kill()
                    self.assertEqual(process.wait(60), -signal.SIGKILL)
                    wait_until(lambda: not self.placed_folders(), 60)
                    os.kill(setup, signal.SIGKILL)
                    shutil.rmtree(self.temporary / "VarnoZPK_TEMP", ignore_errors=True)
                else:
                    os.kill(setup, signal.SIGKILL)
                    self.finish(process)
                self.record_path.unlink()

    def test_second_start_ends_while_the_windows_are_there(self):
        with x_server() as display:
            process = self.start(self.run_file(), DISPLAY=display)
            setup = self.running_setup()
            first = self.placed_folders()
            second = self.start(self.run_file(), DISPLAY=display)
            out, _ = second.communicate(timeout=60)
            self.assertEqual((second.returncode, out), (0, ""))
            wait_until(lambda: self.placed_folders() == first, 60)
            os.kill(setup, signal.SIGKILL)
            self.finish(process)


class DamagedRunFileTestCase(RunFileTestCase):
    def expect_refusal(self, path, words, command=None, **env):
        """One line and status 1; nothing is installed or left behind."""
        program, *arguments = command or [path]
        out, err = self.finish(self.start(program, *arguments, **env), expect=1)
        self.assertEqual(out, "")
        self.assertEqual(err.count("\n"), 1, err)
        self.assertTrue(err.startswith("Zephyrkit: "), err)
        self.assertIn(words, err)
        self.assertEqual(self.records(), [])


class DamagedRunFileTest(DamagedRunFileTestCase):
    def test_truncated_file_is_told(self):
        path = self.run_file()
        good = path.read_bytes()
        # Within the program that is compressed, behind it, and before the end.
        for size in (100_000, len(good) // 3, len(good) // 2, len(good) - 1):
            with self.subTest(size=size):
                path.unlink()
                path.write_bytes(good[:size])
                path.chmod(0o755)
                self.expect_refusal(path, "was cut short or changed")

    def test_changed_byte_is_told(self):
        path = self.run_file()
        good = path.read_bytes()
        # In the program, past it, in what is packed, and in the table.
        for at in (100_000, 400_000, len(good) // 2, len(good) * 9 // 10, len(good) - 100):
            with self.subTest(at=at):
                path.unlink()  # a process that ends may still run from it
                path.write_bytes(good[:at] + bytes([good[at] ^ 1]) + good[at + 1 :])
                path.chmod(0o755)
                self.expect_refusal(path, "changed")

    def test_a_person_with_a_display_sees_it(self):
        path = self.run_file()
        os.truncate(path, path.stat().st_size - 1)
        # The fourth key asks the window manager to close it.
        closings = [["key", key] for key in ("Return", "Escape", "space", "alt+F4")]
        closings.append(["mousemove", "--window", "WINDOW", "232", "76", "click", "1"])
        with x_server(window_manager=True) as display:
            for closing in closings:
                with self.subTest(closing=closing):
                    self.show_and_close(path, display, closing)

    def show_and_close(self, path, display, closing):
        process = self.start(path, DISPLAY=display)

        def tool(*arguments):
            return subprocess.run(
                arguments, env=dict(os.environ, DISPLAY=display), capture_output=True, text=True
            ).stdout.strip()

        # Keys go to the window that the window manager has made the active one.
        wait_until(lambda: tool("xdotool", "getactivewindow", "getwindowname") == "Zephyrkit", 60)
        window = tool("xdotool", "getactivewindow")
        self.assertIsNone(process.poll(), "it waits for the person")
        self.assertEqual(os.listdir(self.temporary), [])
        # Its words are on it, in two colours.
        words = "import -window %s -crop 464x40+0+0 png:- | identify -format %%k -" % window
        wait_until(lambda: tool("sh", "-c", words) == "2", 60)
        if "ZPK_TEST_SCREENSHOTS" in os.environ:
            tool("import", "-window", "root", os.path.join(os.environ["ZPK_TEST_SCREENSHOTS"], "run-file-damaged.png"))
        tool("xdotool", *[window if word == "WINDOW" else word for word in closing])
        try:
            _, err = self.finish(process, expect=1)
        finally:
            # Its window must not stand before the next one's.
            process.kill()
        self.assertIn("was cut short or changed", err)

    def test_full_disk_is_told_and_leaves_nothing(self):
        write(self.source / "Data/noise", os.urandom(8 << 20))
        path = self.run_file()
        limited = subprocess.Popen(
            ["sh", "-c", 'ulimit -f 2048; exec "$0"', path],
            env=self.environment(),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )
        _, err = self.finish(limited, expect=1)
        self.assertIn("File too large", err)

    @unittest.skipUnless(os.geteuid() == 0, "only root can mount")
    def test_disk_without_room_is_told_and_nothing_stays_on_it(self):
        write(self.source / "Data/noise", os.urandom(8 << 20))
        path = self.run_file()
        # For neither what is packed, nor what is stored.
        for size in ("2m", "7m"):
            with self.subTest(size), self.disk("mode=0700,size=" + size) as place:
                out, err = self.finish(self.start(path, TMPDIR=str(place)), expect=1)
                self.assertEqual(out, "")
                self.assertRegex(err, "^Zephyrkit: [^\n]*: No space left on device\n$")
                wait_until(lambda: not os.listdir(place), 60)
                self.assertEqual(self.records(), [])


class ForeignMachineTest(DamagedRunFileTestCase):
    """What no run file can do anything about is a line."""

    def test_launcher_for_another_processor(self):
        bundle = self.folder / "Another.app"
        shutil.copytree(TEMPLATE, bundle, symlinks=True, ignore=shutil.ignore_patterns("Frameworks"))
        launcher = bundle / "Contents/Linux/Zephyrkit"
        program = launcher.read_bytes()
        launcher.unlink()
        # The number of ARM's in the place of this one's.
        write(launcher, program[:18] + b"\xb7\0" + program[20:], 0o755)
        self.recorder()
        self.startup()
        path = self.pack("TestSetup.run", "--without-windows", template=bundle)
        self.expect_refusal(path, "/Contents/Linux/Zephyrkit: Made for another processor")

    @unittest.skipUnless(shutil.which("strace"), "strace is not installed")
    def test_kernel_or_file_system_without_a_call(self):
        path = self.run_file()
        for call, words in (("flock", "the folder cannot be locked"), ("clone", "Function not implemented")):
            with self.subTest(call):
                command = ["strace", "-qq", "-o", "/dev/null", "-e", "trace=" + call,
                           "-e", "inject=%s:error=ENOSYS" % call, path]
                self.expect_refusal(path, words, command=command)

    def test_display_that_only_the_carried_windows_know(self):
        path = self.run_file()
        os.truncate(path, path.stat().st_size - 1)
        self.expect_refusal(path, "was cut short or changed", DISPLAY=None, WAYLAND_DISPLAY="wayland-0")


if __name__ == "__main__":
    unittest.main()
