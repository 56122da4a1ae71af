# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Another user who waits in the temporary folder and swaps what the launcher makes there.

Ten launches for each kind of folder: none may run a program of the other's or remove a folder of the person's.
"""

import concurrent.futures
import contextlib
import os
import pwd
import subprocess
import sys
import textwrap
import unittest

from support import STAGING_NAME, PackageTestCase, write

LAUNCHES = 10
PRIVATE_NAME = f"com.varno.zephyrkit-{os.geteuid()}"

# Moves away whatever has one of the two names, and puts in its place a folder with a setup program, or a link to a
# folder of the person's, in turn. Says "ready" after its first round.
ATTACKER = textwrap.dedent(
    """\
    import contextlib, os, shutil, sys  # all of it before the rights go: an interpreter may lie in root's home
    user, shared, private, staging, planted, precious, work = sys.argv[1:]
    os.setgroups([])
    os.setgid(int(user))
    os.setuid(int(user))
    turn = 0
    while os.getppid() != 1:
        for where in (shared, os.path.join(shared, private)):
            for name in (private, staging):
                turn += 1
                place = os.path.join(where, name)
                with contextlib.suppress(OSError):
                    os.rename(place, os.path.join(work, "stolen-%d" % turn))
                with contextlib.suppress(OSError):
                    os.rename(place, os.path.join(shared, ".stolen-%d" % turn))
                with contextlib.suppress(OSError):
                    if turn % 3 == 0:
                        os.symlink(precious, place)
                    elif turn % 3 == 1:
                        shutil.copytree(planted, place, symlinks=True)
                    else:
                        os.mkdir(place, 0o700)
        if turn == 4:
            print("ready", flush=True)
    """
)


@unittest.skipUnless(os.geteuid() == 0, "it takes root to be two users")
class RaceTest(PackageTestCase):
    def setUp(self):
        super().setUp()
        self.nobody = pwd.getpwnam("nobody")
        # The other user comes to everything here but the person's own folders.
        self.folder.chmod(0o755)
        self.recorder()
        self.startup()

    @contextlib.contextmanager
    def attacked(self, base, shared):
        """The other user at work in `shared`; gives the person's folder that they are after."""
        precious = base / "precious"
        write(precious / "Data/kept", "the person's")
        # Also what a setup program of theirs would do, with the root folder of the person's as its own.
        planted = base / "planted"
        script = "#!/bin/sh\necho planted >> \"$ZPK_TEST_RECORD\"\n"
        for root in (planted, planted / STAGING_NAME):
            write(root / "Data/setup", script, 0o755)
            write(root / "Info/Startup.xml", '<Startup Exec="$Data$/setup" Param=""/>')
        work = base / "work"
        work.mkdir()
        for path in (work, planted, *planted.rglob("*")):
            os.chown(path, self.nobody.pw_uid, self.nobody.pw_gid)
        attacker = subprocess.Popen(
            [
                *(sys.executable, "-c", ATTACKER, str(self.nobody.pw_uid)),
                *(shared, PRIVATE_NAME, STAGING_NAME, planted, precious, work),
            ],
            stdout=subprocess.PIPE,
            text=True,
            preexec_fn=lambda: os.nice(5),
        )
        try:
            self.assertEqual(attacker.stdout.readline(), "ready\n")
            yield precious
            self.assertIsNone(attacker.poll(), "the other user gave up")
        finally:
            attacker.kill()
            attacker.wait()
            attacker.stdout.close()

    def launches(self, kind, mode, owner, group, plant_first):
        """Ten launches in one folder of that kind; gives what went wrong."""
        base = self.folder / kind
        shared = base / "shared"
        shared.mkdir(parents=True)
        os.chown(shared, owner, group)
        shared.chmod(mode)
        cache = base / "cache"
        record = base / "record"
        bundle = self.bundles[kind]
        problems = []
        if not plant_first:
            self.launch_once(bundle, shared, cache, record)
            record.unlink()
        with self.attacked(base, shared) as precious:
            for turn in range(LAUNCHES):
                status = self.launch_once(bundle, shared, cache, record)
                seen = record.read_text() if record.exists() else ""
                record.unlink(missing_ok=True)
                if status != 0 or "planted" in seen.splitlines() or len(seen.splitlines()) != 1:
                    problems.append((kind, turn, status, seen))
                if not (precious / "Data/kept").exists():
                    problems.append((kind, turn, "removed the person's folder"))
        if cache.exists() and os.listdir(cache):
            problems.append((kind, "left in the cache folder", os.listdir(cache)))
        return problems

    def launch_once(self, bundle, shared, cache, record):
        return subprocess.run(
            [bundle / "Contents/Linux/Zephyrkit"],
            env=self.environment(TMPDIR=str(shared), XDG_CACHE_HOME=str(cache), ZPK_TEST_RECORD=str(record)),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            timeout=120,
        ).returncode

    def test_whoever_swaps_folders_gains_nothing(self):
        other, group = self.nobody.pw_uid, self.nobody.pw_gid
        kinds = [
            # name, mode, owner, group, whether the other user was there first
            ("sticky", 0o1777, 0, 0, False),
            ("sticky-planted", 0o1777, 0, 0, True),
            ("sticky-group", 0o1775, 0, group, False),
            ("open", 0o777, 0, 0, False),
            ("group", 0o775, 0, group, False),
            ("foreign", 0o755, other, group, False),
            ("foreign-sticky", 0o1777, other, group, False),
        ]
        self.bundles = {}
        for kind, *_ in kinds:
            self.describe_package(f"{self.name}-{kind}")
            self.bundles[kind] = self.pack(f"{kind}.app")
        with concurrent.futures.ThreadPoolExecutor(len(kinds)) as pool:
            rows = list(pool.map(lambda row: self.launches(*row), kinds))
        self.assertEqual([problem for row in rows for problem in row], [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
