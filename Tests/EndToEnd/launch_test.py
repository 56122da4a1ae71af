# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The launcher from its start to its end, on real bundles."""

import contextlib
import gzip
import os
import pathlib
import pwd
import re
import socket
import subprocess
import threading
import time
import unittest

from support import RECORDER, TEMPLATE, PackageTestCase, odc_archive, wait_until, write, x_server


class SetupProgramTest(PackageTestCase):
    def test_runs_from_the_staging_folder_with_its_one_argument(self):
        self.recorder()
        self.startup(param="-a -b  &quot;c&quot;")
        done = self.launch(self.pack())
        record = self.record()
        staging = str(self.temporary / "VarnoZPK_TEMP")
        self.assertEqual(record["program"], staging + "/Data/setup")
        self.assertEqual(record["arguments"], ['-a -b  "c"'])
        self.assertEqual(record["contents"], ["Data", "Data/setup", "Info", "Info/Startup.xml"])
        self.assertIn("recorder: ran", done.stdout)

    def test_inherits_environment_and_folder_and_nothing_else(self):
        bundle = self.simple_package()
        expected = self.environment(MARK="a b")
        self.launch(bundle, MARK="a b")
        record = self.record()
        self.assertEqual(record["folder"], str(self.folder))
        environment = record["environment"]
        environment.pop("LC_CTYPE", None)  # the interpreter of the recorder sets it
        environment.pop("_", None)
        expected.pop("_", None)
        self.assertEqual(environment, expected)
        # The fourth is the folder listing's own.
        self.assertEqual(record["descriptors"][:3], ["0", "1", "2"])
        self.assertLessEqual(len(record["descriptors"]), 4)

    def test_desktop_adds_nothing_to_the_environment(self):
        bundle = self.simple_package()
        with x_server() as display:
            expected = self.environment(DISPLAY=display)
            self.launch(bundle, DISPLAY=display)
        environment = self.record()["environment"]
        for own in ("LC_CTYPE", "_"):
            environment.pop(own, None)
            expected.pop(own, None)
        self.assertEqual(environment, expected)

    def test_application_bundle_stands_for_its_main_program(self):
        self.recorder("Setup.app/Contents/Linux/Main")
        write(
            self.source / "Data/Setup.app/Contents/Info.plist",
            "<plist><dict><key>CFBundleExecutable</key><string>Main</string></dict></plist>",
        )
        self.startup("$Data$/Setup.app", "")
        self.launch(self.pack())
        self.assertTrue(self.record()["program"].endswith("/Data/Setup.app/Contents/Linux/Main"))
        self.assertEqual(self.record()["arguments"], [""])

    def test_without_description_first_executable_runs_without_arguments(self):
        self.recorder("anything")
        write(self.source / "Data/readme", "not executable")
        write(self.source / "Data/.hidden", RECORDER, 0o755)
        self.launch(self.pack())
        self.assertEqual(self.record()["arguments"], [])
        self.assertTrue(self.record()["program"].endswith("/Data/anything"))

    def test_payload_without_program_ends_in_silence(self):
        write(self.source / "Data/.hidden", RECORDER, 0o755)
        write(self.source / "Data/readme", "not executable")
        self.launch(self.pack())
        self.assertEqual(self.records(), [])

    def test_its_exit_status_is_not_the_launchers(self):
        self.launch(self.simple_package(), expect=0, ZPK_TEST_STATUS="7")

    def test_killed_setup_program_ends_like_any_other(self):
        write(self.source / "Data/setup", "#!/bin/sh\nkill -9 $$\n", 0o755)
        self.startup()
        self.launch(self.pack())

    def test_nobody_reads_the_output(self):
        bundle = self.simple_package()
        reader, writer = os.pipe()
        os.close(reader)
        with os.fdopen(writer) as pipe:
            done = subprocess.run(
                [bundle / "Contents/Linux/Zephyrkit"], env=self.environment(), stdout=pipe, stderr=pipe, timeout=60
            )
        self.assertEqual(done.returncode, 0)
        self.record()
        self.assert_nothing_left()

    def test_signals_are_not_ignored_in_the_setup_program(self):
        self.launch(self.simple_package())
        # The interpreter of the recorder ignores SIGPIPE (13) and SIGXFSZ (25) by itself, and signals
        # past 31 are the C library's own.
        checked = 0x7FFFFFFF & ~(1 << 12 | 1 << 24)
        for line in self.record()["blocked"]:
            name, value = line.split()
            self.assertEqual(int(value, 16) & checked, 0, name)


class BundleTest(PackageTestCase):
    def test_started_through_a_link_finds_its_bundle(self):
        bundle = self.simple_package()
        link = self.folder / "link"
        link.symlink_to(bundle / "Contents/Linux/Zephyrkit")
        self.launch(bundle, program=link)
        self.assertEqual(self.record()["arguments"], ["--test"])

    def test_linked_bundle_folder(self):
        bundle = self.simple_package()
        link = self.folder / "Other.app"
        link.symlink_to(bundle)
        self.launch(link)
        self.record()

    def test_name_with_blanks_quotes_and_other_letters(self):
        self.recorder()
        self.startup()
        bundle = self.pack()
        odd = self.folder / "Ünï 'q\" $x;\n.app"
        bundle.rename(odd)
        self.launch(odd)
        self.record()

    def test_read_only_bundle(self):
        bundle = self.simple_package()
        # What is shared with the template keeps its mode.
        own = ["(", "-type", "d", "-o", "-links", "1", ")"]
        subprocess.run(["find", bundle, *own, "-exec", "chmod", "a-w", "{}", "+"], check=True)
        self.addCleanup(subprocess.run, ["chmod", "-R", "u+w", bundle])
        self.launch(bundle)
        self.record()

    def test_template_without_archives_ends_in_silence(self):
        done = self.launch(TEMPLATE)
        self.assertEqual(self.records(), [])
        self.assertEqual([l for l in done.stderr.splitlines() if l.startswith("Zephyrkit")], [])

    def test_without_payload_archive(self):
        bundle = self.simple_package()
        (bundle / "Contents/Resources/Data.datx").unlink()
        self.launch(bundle)
        self.assertEqual(self.records(), [])

    def test_without_description_archive_the_payload_still_installs(self):
        bundle = self.simple_package()
        (bundle / "Contents/Resources/Info.datx").unlink()
        self.launch(bundle)
        self.assertEqual(self.record()["arguments"], [])

    def test_archive_that_is_a_folder_or_a_fifo(self):
        for make in (os.mkdir, os.mkfifo):
            bundle = self.simple_package() if make is os.mkdir else self.pack("TestSetup2.app")
            archive = bundle / "Contents/Resources/Data.datx"
            archive.unlink()
            make(archive)
            self.launch(bundle)
        self.assertEqual(self.records(), [])

    def test_without_archive_tool(self):
        bundle = self.simple_package()
        (bundle / "Contents/Helpers/ditto").unlink()
        self.launch(bundle)
        self.assertEqual(self.records(), [])


class OutputTest(PackageTestCase):
    """A run's whole words, which are those of its parts in their order and no other."""

    def setUp(self):
        super().setUp()
        write(self.source / "Data/setup", "#!/bin/sh\necho setup out\necho setup err >&2\n", 0o755)
        self.startup()
        self.bundle = self.pack()

    def traces(self, *keys):
        """The line of each lookup of the keys, in English."""
        table = self.bundle / "Contents/Resources/UILang/en/ZPKStringTable.def"
        texts = dict(re.findall(r'^"(\w+)"\s*=\s*"(.*)";$', table.read_text(), re.MULTILINE))
        return [
            f"CResourceBundleStringTable::GetStringForKey: {table}: ZPKStringTable.def: '{key}'='{texts[key]}'"
            for key in ("ZPKString_" + name for name in keys)
        ]

    MENU = ("AboutZephyrkit", "Preferences", "Services", "HideZephyrkit", "HideOthers", "ShowAll", "QuitZephyrkit")

    def test_on_the_terminal(self):
        done = self.launch(self.bundle)
        self.assertEqual(done.stderr.splitlines(), [*self.traces(*self.MENU, "FILE_EXTRACT"), "setup err"])
        self.assertEqual(
            done.stdout.splitlines(),
            [*(f"{value}%  Extracting installation files…" for value in (10, 40, 100)), "setup out"],
        )

    def test_with_windows(self):
        with x_server() as display:
            done = self.launch(self.bundle, DISPLAY=display)
        self.assertEqual(done.stderr.splitlines(), [*self.traces(*self.MENU, "FILE_EXTRACT"), "setup err"])
        self.assertEqual(done.stdout.splitlines(), ["setup out"])


class DamagedArchiveTest(PackageTestCase):
    """A payload of a few hundred kilobytes, damaged in many places: the launcher always ends."""

    def setUp(self):
        super().setUp()
        self.recorder()
        self.startup()
        write(self.source / "Data/noise", os.urandom(300_000))
        self.bundle = self.pack()
        self.archive = self.bundle / "Contents/Resources/Data.datx"
        self.intact = self.archive.read_bytes()

    def test_truncated(self):
        for size in (0, 1, 10, 102399, 102400, 102401, len(self.intact) // 2, len(self.intact) - 1):
            with self.subTest(size=size):
                self.archive.write_bytes(self.intact[:size])
                self.launch(self.bundle)

    def test_flipped_bits(self):
        for place in (0, 3, 10, 5000, len(self.intact) - 102400, len(self.intact) - 102390, len(self.intact) - 1):
            with self.subTest(place=place):
                damaged = bytearray(self.intact)
                damaged[place] ^= 0x10
                self.archive.write_bytes(damaged)
                self.launch(self.bundle)

    def test_description_archive_of_noise(self):
        (self.bundle / "Contents/Resources/Info.datx").write_bytes(os.urandom(5000))
        self.launch(self.bundle)


class HostileArchiveTest(PackageTestCase):
    def launch_with_payload(self, members):
        bundle = self.simple_package()
        (bundle / "Contents/Resources/Data.datx").write_bytes(gzip.compress(odc_archive(members)))
        before = sorted(os.listdir(self.folder))
        self.launch(bundle)
        self.assertEqual(sorted(os.listdir(self.folder)), before)

    def test_members_that_climb_stay_inside(self):
        self.launch_with_payload(
            [
                ("Data", 0o40755, b""),
                ("Data/../../../escaped", 0o100644, b"x"),
                ("../../escaped", 0o100644, b"x"),
                (str(self.folder / "escaped"), 0o100644, b"x"),
            ]
        )
        self.assertEqual(self.records(), [])

    def test_member_behind_a_link_stays_inside(self):
        self.launch_with_payload(
            [
                ("Data", 0o40755, b""),
                ("Data/out", 0o120777, os.fsencode(self.folder)),
                ("Data/out/escaped", 0o100644, b"x"),
            ]
        )

    def test_payload_that_is_a_link_writes_nothing_outside(self):
        outside = self.folder / "outside"
        outside.mkdir()
        self.launch_with_payload([("Data", 0o120777, os.fsencode(outside)), ("Data/setup", 0o100755, RECORDER.encode())])
        self.assertEqual(self.records(), [])
        self.assertEqual(os.listdir(outside), [])

    def test_description_archive_that_brings_links_in_the_payloads_way(self):
        outside = self.folder / "outside"
        outside.mkdir()
        write(outside / "kept", "kept")
        bundle = self.simple_package()
        for target in (outside, outside / "kept"):
            members = [("Data", 0o120777, os.fsencode(target)), ("Data.dat", 0o120777, os.fsencode(target))]
            (bundle / "Contents/Resources/Info.datx").write_bytes(gzip.compress(odc_archive(members)))
            self.launch(bundle)
            self.assertEqual(os.listdir(outside), ["kept"])
            self.assertEqual((outside / "kept").read_text(), "kept")

    def test_description_folder_that_is_a_link_deletes_nothing_outside(self):
        conditions = '<UpdateInfo><Conditions><Disc FilePath="none"/></Conditions></UpdateInfo>'
        outside = self.folder / "outside"
        write(outside / "Condition.xml", conditions)
        bundle = self.simple_package()
        members = [("Info", 0o120777, os.fsencode(outside))]
        (bundle / "Contents/Resources/Info.datx").write_bytes(gzip.compress(odc_archive(members)))
        self.launch(bundle)
        self.assertEqual((outside / "Condition.xml").read_text(), conditions)

    def launch_with_description(self, members):
        """A package whose products are nowhere installed, its description archive made of `members`."""
        self.recorder()
        self.startup()
        bundle = self.pack("TestSetup.app", "--force")
        archive = bundle / "Contents/Resources/Info.datx"
        archive.write_bytes(gzip.compress(odc_archive(members)))
        return self.launch(bundle)

    def test_conditions_hold_through_links_of_the_package(self):
        conditions = b'<U><TargetItems><ItemInfo DisplayName="Tandem"/></TargetItems></U>'
        rows = {
            "no link": [("Info", 0o40755, b""), ("Info/Condition.xml", 0o100644, conditions)],
            "folder": [("Real", 0o40755, b""), ("Real/Condition.xml", 0o100644, conditions), ("Info", 0o120777, b"Real")],
            "file": [
                ("Info", 0o40755, b""),
                ("Info/real", 0o100644, conditions),
                ("Info/Condition.xml", 0o120777, b"real"),
            ],
        }
        for name, members in rows.items():
            with self.subTest(name):
                done = self.launch_with_description(members)
                self.assertIn("\n  Tandem\n", done.stderr)
                self.assertEqual(self.records(), [])

    def test_conditions_behind_links_out_of_the_package_refuse(self):
        outside = self.folder / "outside"
        installing = write(outside / "Condition.xml", "<U/>")
        before = installing.read_bytes()
        rows = {
            "folder": [("Info", 0o120777, os.fsencode(outside))],
            "file": [("Info", 0o40755, b""), ("Info/Condition.xml", 0o120777, os.fsencode(installing))],
            "dangling folder": [("Info", 0o120777, b"nowhere")],
            "dangling file": [("Info", 0o40755, b""), ("Info/Condition.xml", 0o120777, b"nowhere")],
            "to itself": [("Info", 0o120777, b"Info")],
        }
        for name, members in rows.items():
            with self.subTest(name):
                self.launch_with_description(members)
                self.assertEqual(self.records(), [])
                self.assertEqual(os.listdir(outside), ["Condition.xml"])
                self.assertEqual(installing.read_bytes(), before)

    def test_disc_is_asked_for_through_a_link_of_the_package(self):
        conditions = b'<U><Conditions><Disc FilePath="none"/></Conditions></U>'
        done = self.launch_with_description(
            [("Real", 0o40755, b""), ("Real/Condition.xml", 0o100644, conditions), ("Info", 0o120777, b"Real")]
        )
        self.assertEqual(self.records(), [])
        # Nobody is there to ask: the search is cancelled, and no list of products follows.
        self.assertNotIn("This update", done.stderr)

    def test_description_that_is_a_file_asks_for_nothing(self):
        self.launch_with_description([("Info", 0o100644, b"a file")])
        self.assertEqual(self.record()["arguments"], [])

    def test_startup_description_through_links(self):
        startup = b'<Startup Exec="$Data$/setup" Param="linked"/>'
        outside = write(self.folder / "outside/Startup.xml", startup)
        self.launch_with_description(
            [("Real", 0o40755, b""), ("Real/Startup.xml", 0o100644, startup), ("Info", 0o120777, b"Real")]
        )
        self.launch_with_description(
            [("Info", 0o40755, b""), ("Info/Startup.xml", 0o120777, os.fsencode(outside))]
        )
        self.assertEqual([record["arguments"] for record in self.records()], [["linked"], []])

    def test_fifo_in_the_place_of_the_startup_description(self):
        bundle = self.simple_package()
        members = [("Info", 0o40755, b""), ("Info/Startup.xml", 0o10644, b"")]
        (bundle / "Contents/Resources/Info.datx").write_bytes(gzip.compress(odc_archive(members)))
        self.launch(bundle)
        self.assertEqual(self.record()["arguments"], [])


class StagingFolderTest(PackageTestCase):
    def test_old_staging_folder_is_replaced(self):
        write(self.temporary / "VarnoZPK_TEMP/Data/old", "left by an interrupted run")
        self.launch(self.simple_package())
        self.assertNotIn("Data/old", self.record()["contents"])

    def test_staging_folder_that_cannot_be_made_is_told(self):
        bundle = self.simple_package()
        shared = self.folder / "shared"
        shared.mkdir()
        shared.chmod(0o1777)
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir(mode=0o700)
        # Somebody put a link where the person's private folder belongs.
        (shared / f"com.varno.zephyrkit-{os.geteuid()}").symlink_to(elsewhere)
        done = self.launch(bundle, TMPDIR=str(shared), XDG_CACHE_HOME="/dev/null")
        self.assertEqual(self.records(), [])
        self.assertIn("temporary folder", done.stderr)
        self.assertEqual(os.listdir(elsewhere), [])

    def test_temporary_folder_that_others_may_empty_is_passed_over(self):
        bundle = self.simple_package()
        shared = self.folder / "shared"
        shared.mkdir()
        shared.chmod(0o777)
        cache = self.folder / "cache"
        self.launch(bundle, TMPDIR=str(shared), XDG_CACHE_HOME=str(cache))
        self.assertEqual(self.record()["staging"], str(cache / "VarnoZPK_TEMP"))
        self.assertEqual(cache.stat().st_mode & 0o7777, 0o700)
        self.assertEqual(os.listdir(cache) + os.listdir(shared), [])

    def test_shared_temporary_folder_gets_a_private_one(self):
        bundle = self.simple_package()
        shared = self.folder / "shared"
        shared.mkdir()
        shared.chmod(0o1777)
        self.launch(bundle, TMPDIR=str(shared))
        private = shared / f"com.varno.zephyrkit-{os.geteuid()}"
        self.assertEqual(self.record()["staging"], str(private / "VarnoZPK_TEMP"))
        self.assertEqual(private.stat().st_mode & 0o7777, 0o700)
        self.assertEqual(os.listdir(private), [])

    def test_staging_folder_is_its_owners_alone_whatever_the_umask(self):
        write(
            self.source / "Data/setup",
            "#!/bin/sh\ncd \"${0%/*}\" && stat -c '%a %n' .. . open closed sub sub/tool > \"$ZPK_TEST_RECORD\"\n",
            0o755,
        )
        self.startup()
        write(self.source / "Data/open", "x", 0o666)
        write(self.source / "Data/closed", "x", 0o600)
        write(self.source / "Data/sub/tool", "x", 0o775)
        (self.source / "Data/sub").chmod(0o775)
        bundle = self.pack()
        for mask in (0o000, 0o022, 0o277):
            with self.subTest(mask=oct(mask)):
                before = os.umask(mask)
                try:
                    self.temporary.chmod(0o755)
                    self.launch(bundle)
                finally:
                    os.umask(before)
                self.assertEqual(
                    self.record_path.read_text().splitlines(),
                    ["700 ..", "755 .", "666 open", "600 closed", "775 sub", "775 sub/tool"],
                )
                self.record_path.unlink()

    @unittest.skipUnless(os.geteuid() == 0, "it takes root to leave root's folder")
    def test_folder_that_root_left_is_not_taken(self):
        planted = write(
            self.temporary / "VarnoZPK_TEMP/Data/setup", "#!/bin/sh\necho planted > \"$ZPK_TEST_RECORD\"\n", 0o755
        )
        bundle = self.simple_package()
        (bundle / "Contents/Resources/Data.datx").unlink()
        nobody = pwd.getpwnam("nobody")
        for path in (self.folder, self.temporary, self.folder / "runtime"):
            os.chown(path, nobody.pw_uid, nobody.pw_gid)
        done = subprocess.run(
            [bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=60,
            user=nobody.pw_uid,
            group=nobody.pw_gid,
            extra_groups=[],
        )
        self.assertEqual(done.returncode, 0)
        self.assertIn("temporary folder", done.stderr)
        self.assertFalse(self.record_path.exists())
        self.assertTrue(planted.exists())

    @unittest.skipUnless(os.geteuid() == 0, "mounting a small file system takes root")
    def test_full_disk_leaves_nothing(self):
        write(self.source / "Data/large", os.urandom(3_000_000))
        bundle = self.simple_package()
        small = self.folder / "small"
        small.mkdir(mode=0o700)
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=1m,mode=700", "none", small], check=True)
        self.addCleanup(subprocess.run, ["umount", small])
        self.launch(bundle, TMPDIR=str(small))
        self.assertEqual(os.listdir(small), [])
        self.assertEqual(self.records(), [])


class DesktopTest(PackageTestCase):
    def test_runs_to_the_end_on_a_real_display(self):
        bundle = self.simple_package()
        with x_server() as display:
            self.launch(bundle, DISPLAY=display)
        self.assertEqual(self.record()["arguments"], ["--test"])

    def test_display_that_refuses_falls_back_to_the_terminal(self):
        done = self.launch(self.simple_package(), DISPLAY=":4711")
        self.assertEqual(self.record()["arguments"], ["--test"])
        self.assertIn("100", done.stdout)

    @contextlib.contextmanager
    def display_that_hangs_up(self, address, hears):
        """A socket that takes each connection only to drop it, at once or when it has heard so many bytes; gives the
        list of those it took.
        """
        taken = []
        with socket.socket(socket.AF_UNIX) as server:
            server.bind(address)
            server.listen()

            def hang_up():
                with contextlib.suppress(OSError):
                    while True:
                        with server.accept()[0] as connection:
                            connection.recv(hears, socket.MSG_WAITALL)
                        taken.append(address)

            thread = threading.Thread(target=hang_up)
            thread.start()
            try:
                yield taken
            finally:
                server.shutdown(socket.SHUT_RDWR)
                thread.join()
                os.unlink(address)

    def test_x11_display_that_hangs_up_falls_back_to_the_terminal(self):
        bundle = self.simple_package()
        # A number far from those that servers take.
        address = pathlib.Path(f"/tmp/.X11-unix/X{40_000 + os.getpid() % 10_000}")
        address.parent.mkdir(mode=0o1777, exist_ok=True)
        # What asks for the connection has twelve bytes and more.
        for hears in (0, 12):
            with self.subTest(hears=hears), self.display_that_hangs_up(str(address), hears) as taken:
                self.launch(bundle, DISPLAY=address.name.replace("X", ":"))
                self.assertTrue(taken)
                self.record()
                self.record_path.unlink()

    def test_wayland_display_that_hangs_up_falls_back_to_the_terminal(self):
        bundle = self.simple_package()
        # The first question has twelve bytes, for the list of what there is.
        for name, hears in (("wayland-7", 0), ("wayland-8", 12), (str(self.folder / "elsewhere"), 0)):
            with self.subTest(name=name, hears=hears):
                with self.display_that_hangs_up(str(self.folder / "runtime" / name), hears) as taken:
                    self.launch(bundle, WAYLAND_DISPLAY=name)
                self.assertTrue(taken)
                self.record()
                self.record_path.unlink()

    def test_unknown_platform_falls_back_to_the_terminal(self):
        self.launch(self.simple_package(), QT_QPA_PLATFORM="nosuchplatform")
        self.record()

    def test_without_desktop_module_runs_on_the_terminal(self):
        bundle = self.simple_package()
        (bundle / "Contents/PlugIns/ZPKDesktop.so").unlink()
        with x_server() as display:
            self.launch(bundle, DISPLAY=display)
        self.record()

    def test_missing_or_broken_form_is_told_and_nothing_runs(self):
        bundle = self.simple_package()
        with x_server() as display:
            for form in ("MainMenu.ui", "ProgressWindow.ui"):
                path = bundle / "Contents/Resources" / form
                intact = path.read_bytes()
                for contents in (None, b"", b"<ui", intact[: len(intact) // 2]):
                    with self.subTest(form=form, contents=contents):
                        path.unlink(missing_ok=True)
                        if contents is not None:
                            path.write_bytes(contents)
                        done = self.launch(bundle, expect=1, DISPLAY=display)
                        self.assertIn(form, done.stderr)
                path.write_bytes(intact)
        self.assertEqual(self.records(), [])

    def test_progress_window_is_seen_before_the_setup_program(self):
        bundle = self.simple_package()
        with x_server() as display:
            env = self.environment(DISPLAY=display)
            run = subprocess.Popen([bundle / "Contents/Linux/Zephyrkit"], env=env, stderr=subprocess.DEVNULL)
            title = wait_until(lambda: self.window_title(display), 60)
            self.assertFalse(self.record_path.exists())
            self.assertEqual(run.wait(timeout=60), 0)
        self.assertIn("xtract", title)
        self.record()
        self.assert_nothing_left()

    def test_display_that_goes_away_leaves_nothing(self):
        for number in range(60):
            write(self.source / f"Data/noise-{number}", os.urandom(1_000_000))
        bundle = self.simple_package()
        with x_server() as display:
            run = subprocess.Popen(
                [bundle / "Contents/Linux/Zephyrkit"],
                env=self.environment(DISPLAY=display),
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
            )
            wait_until(lambda: (self.temporary / "VarnoZPK_TEMP/Data").exists(), 60)
        run.wait(timeout=60)
        self.assert_nothing_left()

    def test_display_that_goes_away_at_any_moment_ends_everything(self):
        for number in range(40):
            write(self.source / f"Data/noise-{number}", os.urandom(1_000_000))
        bundle = self.simple_package()
        staging = self.temporary / "VarnoZPK_TEMP"
        cut_short = 0
        for turn in range(10):
            with self.subTest(turn=turn), x_server() as display:
                run = subprocess.Popen(
                    [bundle / "Contents/Linux/Zephyrkit"],
                    env=self.environment(DISPLAY=display),
                    stdout=subprocess.DEVNULL,
                    stderr=subprocess.DEVNULL,
                )
                # While it is unscrambled in the first half of the turns, unpacked in the second.
                wait_until(lambda: (staging / ("Data.dat" if turn < 5 else "Data")).exists(), 60)
                time.sleep(0.01 * (turn % 5))
            self.assertGreaterEqual(run.wait(timeout=60), 0, "ended by a signal")
            self.assert_nothing_left()
            tools = subprocess.run(["pgrep", "-f", str(bundle)], capture_output=True, text=True)
            self.assertEqual(tools.stdout, "", "something still runs")
            cut_short += len(self.records()) == 0
            self.record_path.unlink(missing_ok=True)
        self.assertGreater(cut_short, 5, "most turns were to hit the run in its middle")

    @staticmethod
    def window_title(display):
        found = subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--name", "xtract", "getwindowname"],
            env=dict(os.environ, DISPLAY=display),
            capture_output=True,
            text=True,
        )
        return found.stdout.strip()


if __name__ == "__main__":
    unittest.main(verbosity=2)
