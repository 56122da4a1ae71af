# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""An optical drive and a USB disk that udev knows, on a machine that has neither.

The launcher runs below umockdev, which answers its questions about devices, and in a mount table of
its own, where a file system in memory stands for the medium: its source is the device's name.
"""

import os
import pathlib
import shutil
import subprocess
import tempfile

from support import write

DRIVE = "sr0"
DISK = "sdq"

DEVICES = """\
P: /devices/pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0/0:0:0:0/block/sr0
N: sr0
E: DEVNAME=/dev/sr0
E: DEVTYPE=disk
E: MAJOR=11
E: MINOR=0
E: SUBSYSTEM=block
E: ID_CDROM=1
E: ID_CDROM_MEDIA=1
E: ID_CDROM_MEDIA_CD=1
A: dev=11:0
A: removable=1

P: /devices/pci0000:00/0000:00:14.0/usb1/1-1/1-1:1.0/host2/target2:0:0/2:0:0:0/block/sdq
N: sdq
E: DEVNAME=/dev/sdq
E: DEVTYPE=disk
E: MAJOR=65
E: MINOR=0
E: SUBSYSTEM=block
E: ID_BUS=usb
A: dev=65:0
A: removable=1
"""

# Tells its process number, and keeps umockdev's own files out of the launcher's temporary folder.
STARTER = 'echo $$ > "$1.new" && mv "$1.new" "$1" && TMPDIR=$2 exec "$3"'


class MockedDrive:
    def __init__(self, folder, temporary):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="mocked-", dir=folder))
        self._number = self._folder / "number"
        self._medium = self._folder / "medium"
        self._medium.mkdir()
        self._temporary = temporary
        self.variables = {"TMPDIR": str(self._folder)}

    @staticmethod
    def missing():
        """Why there can be none here; nothing when there can."""
        if os.geteuid() != 0:
            return "mounting a file system takes root"
        if shutil.which("umockdev-run") is None:
            return "umockdev is not installed"
        if subprocess.run(["unshare", "-m", "true"], capture_output=True).returncode != 0:
            return "this machine allows no mount table of one's own"
        return None

    def command(self):
        """What goes before the program so that it finds the drive."""
        devices = write(self._folder / "devices.umockdev", DEVICES)
        return [
            *("unshare", "-m", "umockdev-run", "-d", str(devices), "--"),
            *("sh", "-c", STARTER, "sh", str(self._number), str(self._temporary)),
        ]

    def process(self):
        """The launcher's own number; nothing until it runs."""
        return int(self._number.read_text()) if self._number.exists() else None

    def insert(self, files, device=DRIVE):
        """Mounts a medium that holds the files where the launcher sees it."""
        self._inside("mount", "-t", "tmpfs", "/dev/" + device, str(self._medium))
        # Only the launcher's own mount table leads to it.
        seen = pathlib.Path("/proc/%d/root%s" % (self.process(), self._medium))
        for name in files:
            write(seen / name, "x")

    def eject(self):
        self._inside("umount", str(self._medium))

    def _inside(self, *command):
        subprocess.run(["nsenter", "-t", str(self.process()), "-m", *command], check=True)
