# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""A room: another system's folders, to be read, around folders of the test's own that may be written to.

It has its own mounts, processes and network, and what runs in it is an ordinary user's. As root of the machine
that user is a real one; otherwise a user name space makes do.
"""

import json
import os
import pathlib
import stat
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
PERSON = 1000
STRANGER = 4711

READ_ONLY, NO_EXECUTION = 1, 8

# Calls that the kernel has learnt since Linux 3.17, by their numbers on x86-64.
NEWER_CALLS = {
    "renameat2": 316,
    "getrandom": 318,
    "memfd_create": 319,
    "copy_file_range": 326,
    "statx": 332,
    "rseq": 334,
    "clone3": 435,
    "close_range": 436,
    "openat2": 437,
    "faccessat2": 439,
}


def impossible():
    """Why there can be no rooms here, or nothing."""
    tried = subprocess.run([*name_spaces(), "true"], capture_output=True, text=True)
    return tried.stderr.strip() if tried.returncode else ""


def name_spaces():
    own = [] if os.geteuid() == 0 else ["--user", "--map-root-user"]
    return ["unshare", *own, "--mount", "--pid", "--net", "--ipc", "--fork", "--kill-child", "--mount-proc"]


class Process:
    """What runs in a room."""

    def __init__(self, room, number, output, errors):
        self._room = room
        self._number = number
        self._output = output
        self._errors = errors

    def wait(self, seconds=60):
        status = self._room.ask(do="wait", process=self._number, seconds=seconds)["status"]
        if status is None:
            raise AssertionError("still runs after %s s; it said: %s" % (seconds, self.errors() + self.output()))
        return status

    def ended(self):
        return self._room.ask(do="wait", process=self._number, seconds=0)["status"] is not None

    def send(self, number):
        self._room.ask(do="signal", process=self._number, signal=number)

    def output(self):
        return self._output.read_bytes().decode(errors="surrogateescape")

    def errors(self):
        return self._errors.read_bytes().decode(errors="surrogateescape")

    def complaints(self):
        """The lines of the errors, without what the launcher says of each text that it looks up."""
        return [line for line in self.errors().splitlines() if not line.startswith("CResourceBundle")]


class Room:
    """A room of a test; `folder` is a new one that the test gives it.

    `root` is the system's folder, or None for a room without any. `mounts` are rows of a source outside, a place
    in the room, and READ_ONLY, NO_EXECUTION or 0; `temporary` and `home` are the same for these folders. The
    folders `hidden` are empty in the room.
    """

    def __init__(self, folder, root, *, mounts=(), hidden=(), proc=True, user=PERSON, temporary=0, home=0):
        self._folder = folder
        self.user = user
        self._count = 0
        self.temporary = self._make("tmp", 0o1777)
        self.home = self._make("home", 0o700, user)
        self.runtime = self._make("runtime", 0o700, user)
        self.record = self._make("record", 0o700, user)
        places = [
            (self.temporary, "/tmp", temporary),
            (self.home, "/home/person", home),
            (self.runtime, "/run/user/%d" % user, 0),
            (self.record, "/record", 0),
        ]
        if root:
            places.append((self._users(), "/etc/passwd", READ_ONLY))
        self._keeper = subprocess.Popen(
            [*name_spaces(), sys.executable, HERE / "keeper.py"],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )
        self.ask(
            top=str(self._make("top", 0o755)),
            root=str(root or ""),
            proc=proc,
            user={"id": user, "real": os.geteuid() == 0},
            hidden=hidden,
            mounts=[(str(source), target, flags) for source, target, flags in (*places, *mounts)],
        )

    def _make(self, name, mode, owner=None):
        path = self._folder / name
        path.mkdir(parents=True)
        path.chmod(mode)
        if owner is not None and os.geteuid() == 0:
            os.chown(path, owner, owner)
        return path

    def _users(self):
        path = self._folder / "passwd"
        path.write_text("root:x:0:0::/root:/bin/sh\nperson:x:%d:%d::/home/person:/bin/sh\n" % (PERSON, PERSON))
        return path

    def ask(self, **request):
        """Sends the request to the room's first process; its answer."""
        self._keeper.stdin.write(json.dumps(request) + "\n")
        self._keeper.stdin.flush()
        reply = self._keeper.stdout.readline()
        if not reply:
            raise AssertionError("the room's first process ended with %s" % self._keeper.wait())
        return json.loads(reply)

    def start(self, *program, environment=(), folder="/", missing_calls=()):
        """Starts a program; an OSError when it cannot be. `environment` is a list of NAME=VALUE."""
        self._count += 1
        streams = [self._folder / ("%s-%d" % (name, self._count)) for name in ("output", "errors")]
        reply = self.ask(
            do="start",
            program=[str(word) for word in program],
            environment=list(environment),
            folder=folder,
            output=str(streams[0]),
            errors=str(streams[1]),
            **{"missing calls": [NEWER_CALLS[name] for name in missing_calls]},
        )
        if reply["error"]:
            raise OSError(reply["error"], os.strerror(reply["error"]), program[0])
        return Process(self, reply["process"], *streams)

    def run(self, *program, seconds=60, **options):
        """Starts a program and waits for its end; its process, and the status."""
        process = self.start(*program, **options)
        return process, process.wait(seconds)

    def settle(self, seconds=20):
        """Waits until nothing runs in the room; fails when something does not end."""
        if not self.ask(do="settle", seconds=seconds)["quiet"]:
            raise AssertionError("something still runs")

    def close(self):
        self._keeper.stdin.close()
        self._keeper.wait()
        self._keeper.stdout.close()


def tree(folder):
    """Everything below a folder: type and mode by path, and what is in the files."""
    found = {}
    for where, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(where, name)
            attributes = os.lstat(path)
            contents = b""
            if stat.S_ISREG(attributes.st_mode):
                with open(path, "rb") as file:
                    contents = file.read()
            found[os.path.relpath(path, folder)] = (oct(attributes.st_mode), contents)
    return found
