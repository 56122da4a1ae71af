#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The first process in a room: builds the room around itself, then starts and awaits what it is asked to.

room.py starts it in name spaces of its own, describes the room in one line of JSON, and sends a line a request;
each has one line of an answer. When the requests end, it ends, and with it everything that runs in the room.
"""

import ctypes
import errno
import json
import os
import pathlib
import signal
import struct
import subprocess
import sys
import time

LIBC = ctypes.CDLL(None, use_errno=True)

MS_RDONLY, MS_NOSUID, MS_NODEV, MS_NOEXEC = 1, 2, 4, 8
MS_REMOUNT, MS_BIND, MS_REC, MS_PRIVATE = 32, 4096, 16384, 1 << 18
LOCKED = {os.ST_RDONLY: MS_RDONLY, os.ST_NOSUID: MS_NOSUID, os.ST_NODEV: MS_NODEV, os.ST_NOEXEC: MS_NOEXEC}
LOCKED.update({os.ST_NOATIME: 1024, os.ST_NODIRATIME: 2048, os.ST_RELATIME: 1 << 21})

CLONE_NEWUSER = 0x10000000
PR_SET_NO_NEW_PRIVS, PR_SET_SECCOMP, SECCOMP_MODE_FILTER = 38, 22, 2
# The parts of a filter, as <linux/bpf_common.h> and <linux/seccomp.h> name them.
BPF_LD_W_ABS, BPF_JEQ, BPF_RET = 0x20, 0x15, 0x06
SECCOMP_ALLOW, SECCOMP_ERRNO = 0x7FFF0000, 0x00050000

DEVICES = ("null", "zero", "full", "random", "urandom", "tty")


def checked(result, *what):
    if result != 0:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number), *what)


def mount(source, target, kind=None, flags=0, data=None):
    texts = [os.fsencode(text) if text is not None else None for text in (source, target, kind, data)]
    checked(LIBC.mount(texts[0], texts[1], texts[2], ctypes.c_ulong(flags), texts[3]), target)


def bind(source, target, flags=0):
    mount(source, target, flags=MS_BIND | MS_REC)
    if flags:
        # What the place that it comes from is bound to, nobody but its owner takes away.
        kept = sum(flag for name, flag in LOCKED.items() if os.statvfs(target).f_flag & name)
        mount(None, target, flags=MS_REMOUNT | MS_BIND | kept | flags)


class Room:
    def __init__(self, plan):
        self._top = plan["top"]
        self._user = plan["user"]
        self._ended = {}
        self._space = None if self._user["real"] else self._pretended_user()
        mount("room", self._top, "tmpfs", MS_NOSUID | MS_NODEV, "mode=755")
        if plan["root"]:
            self._furnish(pathlib.Path(plan["root"]))
        if plan["proc"]:
            os.makedirs(self._place("/proc"), exist_ok=True)
            mount("proc", self._place("/proc"), "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC)
        for source, target, flags in plan["mounts"]:
            self._put(source, self._place(target), flags)
        for hidden in plan["hidden"]:
            # There is nothing to hide in a root that has it not.
            if os.path.isdir(self._place(hidden)):
                mount("nothing", self._place(hidden), "tmpfs", MS_RDONLY)
        self._make_devices()
        mount(None, self._top, flags=MS_REMOUNT | MS_RDONLY | MS_NOSUID | MS_NODEV)

    def _place(self, path):
        return self._top + path

    def _furnish(self, root):
        """Puts the folders of a system into the room, to be read."""
        for entry in root.iterdir():
            target = self._place("/" + entry.name)
            if entry.is_symlink():
                os.symlink(os.readlink(entry), target)
            elif entry.is_dir() and entry.name not in ("proc", "dev", "tmp", "home", "run"):
                os.mkdir(target)
                bind(entry, target, MS_RDONLY)

    @staticmethod
    def _put(source, target, flags):
        if os.path.isdir(source):
            os.makedirs(target, exist_ok=True)
        elif not os.path.exists(target):
            os.makedirs(os.path.dirname(target), exist_ok=True)
            open(target, "x").close()
        bind(source, target, flags)

    def _make_devices(self):
        os.mkdir(self._place("/dev"))
        for name in DEVICES:
            open(self._place("/dev/" + name), "x").close()
            bind("/dev/" + name, self._place("/dev/" + name))
        os.mkdir(self._place("/dev/shm"))
        mount("shm", self._place("/dev/shm"), "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777")

    # Requests

    def start(self, order):
        reader, writer = os.pipe()
        process = os.fork()
        if process == 0:
            try:
                self._become(order)
            except OSError as error:
                os.write(writer, b"%d" % error.errno)
            finally:
                os._exit(127)
        os.close(writer)
        with os.fdopen(reader, "rb") as pipe:
            failure = pipe.read()
        return {"process": process, "error": int(failure or 0)}

    def _become(self, order):
        os.setsid()
        for number, path, how in (
            (0, "/dev/null", os.O_RDONLY),
            (1, order["output"], os.O_WRONLY | os.O_CREAT | os.O_APPEND),
            (2, order["errors"], os.O_WRONLY | os.O_CREAT | os.O_APPEND),
        ):
            os.dup2(os.open(path, how), number)
        if self._user["real"]:
            os.chroot(self._top)
            self._become_user()
        else:
            # Somebody with another root folder gets no more user name spaces.
            checked(LIBC.setns(self._space, CLONE_NEWUSER))
            os.chroot(self._top)
        os.chdir(order["folder"])
        if order["missing calls"]:
            take_away(order["missing calls"])
        environment = dict(entry.split("=", 1) for entry in order["environment"])
        os.execve(order["program"][0], order["program"], environment)

    def _become_user(self):
        os.setgroups([])
        os.setresgid(*3 * [self._user["id"]])
        os.setresuid(*3 * [self._user["id"]])

    def _pretended_user(self):
        """A user name space in which who is root here is that user, for all processes of the room."""
        number = self._user["id"]
        numbers = ["--map-user=%d" % number, "--map-group=%d" % number]
        first = subprocess.Popen(
            ["unshare", "--user", *numbers, "sh", "-c", "echo; read line"], stdin=subprocess.PIPE, stdout=subprocess.PIPE
        )
        first.stdout.readline()
        space = os.open("/proc/%d/ns/user" % first.pid, os.O_RDONLY)
        first.communicate()
        return space

    def wait(self, order):
        """The status of a process, or none when it still runs after the seconds; below zero for a signal."""
        self._reap(order["seconds"], lambda: order["process"] in self._ended)
        return {"status": self._ended.get(order["process"])}

    def settle(self, order):
        """Whether nothing runs in the room any more."""
        return {"quiet": self._reap(order["seconds"], lambda: False)}

    def signal(self, order):
        os.kill(order["process"], order["signal"])
        return {}

    def _reap(self, seconds, enough):
        end = time.monotonic() + seconds
        while not enough():
            try:
                process, status = os.waitpid(-1, os.WNOHANG)
            except ChildProcessError:
                return True
            if process:
                self._ended[process] = os.waitstatus_to_exitcode(status)
            elif time.monotonic() > end:
                return False
            else:
                time.sleep(0.005)
        return False


def take_away(numbers):
    """From here on the kernel answers these calls as one that does not have them."""
    steps = [struct.pack("HBBI", BPF_LD_W_ABS, 0, 0, 0)]
    for number in numbers:
        steps.append(struct.pack("HBBI", BPF_JEQ, 0, 1, number))
        steps.append(struct.pack("HBBI", BPF_RET, 0, 0, SECCOMP_ERRNO | errno.ENOSYS))
    steps.append(struct.pack("HBBI", BPF_RET, 0, 0, SECCOMP_ALLOW))
    filter_ = ctypes.create_string_buffer(b"".join(steps))
    program = struct.pack("HxxxxxxP", len(steps), ctypes.addressof(filter_))
    checked(LIBC.prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0))
    checked(LIBC.prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, program, 0, 0))


def answer(reply):
    print(json.dumps(reply), flush=True)


def main():
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    mount(None, "/", flags=MS_REC | MS_PRIVATE)
    room = Room(json.loads(sys.stdin.readline()))
    answer({"ready": True})
    for line in sys.stdin:
        request = json.loads(line)
        answer(getattr(room, request["do"])(request))


if __name__ == "__main__":
    main()
