# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""How a run ends before its time: by a signal, by the launcher's own death, for want of resources."""

import os
import pathlib
import resource
import shutil
import signal
import subprocess
import unittest

from support import STAGING_NAME, PackageTestCase, has_taken_signals, wait_until, write, x_server

END_SIGNALS = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)

# Tells its process number in `number` and its state of signals, then never ends.
ENDLESS_TOOL = """#!/bin/sh
case $3$4 in *{archive}*) ;; *) exec "${{0%/*}}/ditto.real" "$@" ;; esac
grep SigIgn /proc/$$/status > '{number}.ignored'
echo $$ > '{number}.new' && mv '{number}.new' '{number}'
exec sleep 600
"""

# The standard streams, and what a launch holds when it removes what it finds; and whatever it takes.
ENOUGH_TO_REMOVE = 8
ENOUGH = 24

# Waits for a line in a FIFO before it does the work.
HELD_TOOL = """#!/bin/sh
echo $$ > '{number}.new' && mv '{number}.new' '{number}'
read -r line < '{gate}'
exec "${{0%/*}}/ditto.real" "$@"
"""


def is_running(process):
    """Whether the process is there and is more than an entry that nobody has read yet."""
    try:
        return "State:\tZ" not in pathlib.Path(f"/proc/{process}/status").read_text()
    except OSError:
        return False


class EndCase(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.number = self.folder / "number"

    def replace_tool(self, bundle, text, **values):
        tool = bundle / "Contents/Helpers/ditto"
        tool.rename(tool.with_name("ditto.real"))
        write(tool, text.format(number=self.number, **values), 0o755)

    def start(self, program, preexec_fn=None, **env):
        run = subprocess.Popen(
            [program],
            env=self.environment(**env),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            cwd=self.folder,
            preexec_fn=preexec_fn,
        )
        self.addCleanup(run.stdout.close)
        self.addCleanup(run.wait)
        self.addCleanup(run.kill)
        return run

    def tool_process(self):
        wait_until(self.number.exists, 60)
        return int(self.number.read_text())

    def assert_ended(self, run, status, tool):
        output = run.communicate(timeout=60)[0]
        self.assertEqual(run.returncode, status, output)
        wait_until(lambda: not is_running(tool), 60)
        self.assert_nothing_left()
        self.assertEqual(self.records(), [])
        return output

    def launch_with_fault(self, fault, bundle, *, follow=True, **env):
        """Counts in `self.injected` how often the fault struck."""
        log = self.folder / "strace"
        command = ["strace", *(["-f"] if follow else []), "-o", log, "-e", f"inject={fault}"]
        command += ["-e", f"trace={fault.split(':')[0]}", bundle / "Contents/Linux/Zephyrkit"]
        done = subprocess.run(
            command,
            env=self.environment(**env),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=60,
            cwd=self.folder,
        )
        self.assert_nothing_left()
        self.injected = log.read_text().count("(INJECTED)")
        return done


class SignalTest(EndCase):
    def check_all(self, archive, **env):
        bundle = self.simple_package()
        self.replace_tool(bundle, ENDLESS_TOOL, archive=archive)
        for number in END_SIGNALS:
            with self.subTest(number=number):
                run = self.start(bundle / "Contents/Linux/Zephyrkit", **env)
                tool = self.tool_process()
                run.send_signal(number)
                output = self.assert_ended(run, 128 + number, tool)
                self.assertNotIn("cannot unpack", output)
                self.number.unlink()

    def test_while_the_description_is_unpacked(self):
        self.check_all("Info.dat")

    def test_while_the_payload_is_unpacked(self):
        self.check_all("Data.dat")

    def test_while_the_payload_is_unpacked_under_a_window(self):
        with x_server() as display:
            self.check_all("Data.dat", DISPLAY=display)

    def test_while_the_description_is_unpacked_under_a_display(self):
        with x_server() as display:
            self.check_all("Info.dat", DISPLAY=display)

    def test_while_an_alert_is_shown(self):
        write(self.source / "Data/setup", "#!/no/such/interpreter\n", 0o755)
        self.startup()
        bundle = self.pack()
        with x_server() as display:
            seen = ["xdotool", "search", "--sync", "--onlyvisible", "--name", f"^{self.name}$"]
            run = self.start(bundle / "Contents/Linux/Zephyrkit", DISPLAY=display)
            subprocess.run(seen, env=dict(os.environ, DISPLAY=display), check=True, timeout=60, capture_output=True)
            run.send_signal(signal.SIGTERM)
            run.communicate(timeout=60)
        self.assertEqual(run.returncode, 128 + signal.SIGTERM)
        self.assert_nothing_left()

    def test_while_a_disc_is_asked_for(self):
        write(
            self.source / "Info/Condition.xml",
            '<UpdateInfo><Conditions><Disc FilePath="a"/></Conditions></UpdateInfo>',
        )
        bundle = self.simple_package()
        for number in END_SIGNALS:
            with self.subTest(number=number), x_server() as display:
                seen = ["xdotool", "search", "--sync", "--onlyvisible", "--name", "^Installation Disc Required$"]
                run = self.start(bundle / "Contents/Linux/Zephyrkit", DISPLAY=display, LC_ALL="en_US.UTF-8")
                subprocess.run(seen, env=dict(os.environ, DISPLAY=display), check=True, timeout=60, capture_output=True)
                run.send_signal(number)
                output = run.communicate(timeout=60)[0]
                self.assertIn("DISCCHECK_TITLE", output)
                self.assertEqual(run.returncode, 128 + number, output)
                self.assert_nothing_left()
        self.assertEqual(self.records(), [])

    def test_while_the_setup_program_runs_it_is_waited_for(self):
        gate = self.folder / "gate"
        os.mkfifo(gate)
        write(
            self.source / "Data/setup",
            f"#!/bin/sh\necho $$ > '{self.number}.new' && mv '{self.number}.new' '{self.number}'\n"
            f"read -r line < '{gate}'\necho \"$line\" > '{self.folder}/end'\n",
            0o755,
        )
        self.startup()
        bundle = self.pack()
        run = self.start(bundle / "Contents/Linux/Zephyrkit")
        setup = self.tool_process()
        for number in END_SIGNALS:
            run.send_signal(number)
            wait_until(lambda: has_taken_signals(run.pid), 60)
        self.assertIsNone(run.poll())
        self.assertTrue(is_running(setup))
        self.assertTrue((self.temporary / STAGING_NAME / "Data/setup").exists())
        gate.write_text("answered\n")
        self.assertEqual(run.wait(timeout=60), 0)
        self.assertEqual((self.folder / "end").read_text(), "answered\n")
        self.assert_nothing_left()

    def test_ignored_by_the_person_they_end_nothing_and_the_children_ignore_them_too(self):
        gate = self.folder / "gate"
        os.mkfifo(gate)
        bundle = self.simple_package()
        self.replace_tool(bundle, HELD_TOOL, gate=gate)
        run = self.start(
            bundle / "Contents/Linux/Zephyrkit", preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN)
        )
        for _ in ("Info", "Data"):
            tool = self.tool_process()
            self.number.unlink()
            run.send_signal(signal.SIGHUP)
            os.kill(tool, signal.SIGHUP)
            gate.write_text("go\n")
        self.assertEqual(run.wait(timeout=60), 0)
        ignored = next(line for line in self.record()["blocked"] if line.startswith("SigIgn"))
        self.assertEqual(int(ignored.split()[1], 16) & 1, 1, ignored)
        self.assert_nothing_left()

    def test_of_a_run_file_is_its_status(self):
        for number in range(60):
            write(self.source / f"Data/noise-{number}", os.urandom(1_000_000))
        self.recorder()
        self.startup()
        program = self.pack("TestSetup.run")
        run = self.start(program)
        wait_until((self.temporary / STAGING_NAME / "Data").exists, 60)
        run.send_signal(signal.SIGTERM)
        run.communicate(timeout=60)
        self.assertEqual(run.returncode, 128 + signal.SIGTERM)
        wait_until(lambda: not os.listdir(self.temporary), 60)
        self.assertEqual(self.records(), [])


class ToolWithoutLauncherTest(EndCase):
    def test_tool_that_begins_after_the_launchers_death_does_nothing(self):
        gate = self.folder / "gate"
        os.mkfifo(gate)
        bundle = self.simple_package()
        self.replace_tool(bundle, HELD_TOOL, gate=gate)
        run = self.start(bundle / "Contents/Linux/Zephyrkit")
        tool = self.tool_process()
        run.kill()
        run.wait()
        gate.write_text("go\n")
        wait_until(lambda: not is_running(tool), 60)
        self.assertEqual(os.listdir(self.temporary / STAGING_NAME), ["Info.dat"])

    def test_tool_ends_with_the_launcher(self):
        for number in range(40):
            write(self.source / f"Data/noise-{number}", os.urandom(1_000_000))
        bundle = self.simple_package()
        run = self.start(bundle / "Contents/Linux/Zephyrkit")
        tool = wait_until(lambda: self.stopped_tool(run.pid), 60)
        run.kill()
        # It is not asked, and so it need not go on to end.
        wait_until(lambda: not is_running(tool), 60)

    def stopped_tool(self, launcher):
        if not (self.temporary / STAGING_NAME / "Data").exists():
            return None
        for task in pathlib.Path(f"/proc/{launcher}/task").iterdir():
            for child in (task / "children").read_text().split():
                os.kill(int(child), signal.SIGSTOP)
                return int(child)
        return None


class ResourceTest(EndCase):
    """What the host does not give is one line and status 1, or what comes of a part that is missing."""

    def test_without_an_event_descriptor(self):
        bundle = self.simple_package()
        done = self.launch_with_fault("eventfd2:error=EMFILE", bundle)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, "Zephyrkit: eventfd: Too many open files\n")
        self.assertEqual(self.records(), [])

    def test_without_any_thread_or_process(self):
        bundle = self.simple_package()
        done = self.launch_with_fault("clone3,clone,vfork,fork:error=EAGAIN", bundle)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, "Zephyrkit: Resource temporarily unavailable\n")
        self.assertEqual(self.records(), [])

    def test_without_one_thread_or_process(self):
        bundle = self.simple_package()
        for number in range(1, 6):
            with self.subTest(number=number):
                done = self.launch_with_fault(f"clone3,clone,vfork,fork:error=EAGAIN:when={number}", bundle)
                self.assertIn(done.returncode, (0, 1), done.stderr)
                told = [line for line in done.stderr.splitlines() if line.startswith("Zephyrkit: ")]
                self.assertTrue(done.returncode == 0 or len(told) == 1, done.stderr)
                self.record_path.unlink(missing_ok=True)

    def test_without_pipes(self):
        bundle = self.simple_package()
        done = self.launch_with_fault("pipe2:error=EMFILE", bundle)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.records(), [])

    def test_without_descriptors(self):
        """What an earlier run left is never run, and goes as soon as there are descriptors to look into it."""
        bundle = self.simple_package()
        for limit in (*range(3, 17), ENOUGH):
            with self.subTest(limit=limit):
                staging = self.temporary / STAGING_NAME
                write(staging / "Data/a/b/c/d/e/file", "left")
                write(staging / "Data/setup", '#!/bin/sh\necho left > "$ZPK_TEST_RECORD"\n', 0o755)
                staging.chmod(0o700)
                run = self.start(
                    bundle / "Contents/Linux/Zephyrkit",
                    preexec_fn=lambda limit=limit: resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit)),
                )
                output = run.communicate(timeout=60)[0]
                self.assertIn(run.returncode, (0, 1), output)
                if limit == ENOUGH:
                    self.assertTrue(self.record_path.exists(), output)
                if self.record_path.exists():
                    self.assertNotEqual(self.record_path.read_text(), "left\n")
                if limit < ENOUGH_TO_REMOVE:
                    shutil.rmtree(staging, ignore_errors=True)
                self.assert_nothing_left()
                self.record_path.unlink(missing_ok=True)

    def test_file_size_limit_is_an_error_and_no_signal(self):
        write(self.source / "Data/large", os.urandom(3_000_000))
        bundle = self.simple_package()
        run = self.start(
            bundle / "Contents/Linux/Zephyrkit",
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1_000_000, 1_000_000)),
        )
        output = run.communicate(timeout=60)[0]
        self.assertEqual(run.returncode, 0, output)
        self.assertIn("cannot unpack", output)
        self.assert_nothing_left()

    def test_one_failed_call_leaves_nothing(self):
        # Conditions that do not hold: everything but the payload, and none of its pause.
        write(self.source / "Info/Condition.xml", "<UpdateInfo><Conditions><Registry/></Conditions></UpdateInfo>")
        write(self.source / "Info/folder/inner/file", "x")
        bundle = self.pack()
        for call in ("unlinkat", "openat", "getdents64", "statx", "close", "mkdir", "fcntl"):
            for number in range(1, 60):
                with self.subTest(call=call, number=number):
                    done = self.launch_with_fault(f"{call}:error=EIO:when={number}", bundle, follow=False)
                    self.assertIn(done.returncode, (0, 1), done.stderr)
                if not self.injected:
                    break


class WindowResourceTest(EndCase):
    """The same where there are windows: the launcher's second stage, and the toolkit in it."""

    def setUp(self):
        super().setUp()
        self.bundle = self.simple_package()
        self.display = self.enterContext(x_server())

    def assert_no_abort(self, status, errors):
        """A run on the windows or the terminal, or one that has said why there is none."""
        self.assertIn(status, (0, 1), errors)
        told = [line for line in errors.splitlines() if line.startswith("Zephyrkit: ")]
        self.assertTrue(status == 0 or len(told) in (1, 2), errors)
        self.record_path.unlink(missing_ok=True)

    def test_without_what_the_toolkit_asks_for(self):
        for calls in ("eventfd2", "pipe2,pipe", "eventfd2,pipe2,pipe", "clone3,clone,vfork,fork", "socket", "timerfd_create"):
            with self.subTest(calls=calls):
                done = self.launch_with_fault(f"{calls}:error=EMFILE", self.bundle, DISPLAY=self.display)
                self.assert_no_abort(done.returncode, done.stderr)

    def test_without_one_thread_or_process(self):
        # The fifth is the setup program's, and told by an alert.
        for number in range(1, 5):
            with self.subTest(number=number):
                fault = f"clone3,clone,vfork,fork:error=EAGAIN:when={number}"
                done = self.launch_with_fault(fault, self.bundle, follow=False, DISPLAY=self.display)
                self.assertEqual(self.injected, 1)
                self.assert_no_abort(done.returncode, done.stderr)

    def test_without_descriptors(self):
        for limit in (3, 5, 7, *range(9, 24), 28, 32, 40):
            with self.subTest(limit=limit):
                run = self.start(
                    self.bundle / "Contents/Linux/Zephyrkit",
                    preexec_fn=lambda limit=limit: resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit)),
                    DISPLAY=self.display,
                )
                output = run.communicate(timeout=60)[0]
                self.assertIn(run.returncode, (0, 1), output)
                self.assert_nothing_left()
                self.record_path.unlink(missing_ok=True)


if __name__ == "__main__":
    unittest.main(verbosity=2)
