# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""An optical drive and a USB disk that udev knows, on a machine that has neither.

The launcher runs in a mount table of its own, where folders in memory stand for what the kernel and udev
tell of devices, and for the medium: the source of its file system is the device's name.
"""

import os
import pathlib
import subprocess
import tempfile
import textwrap

from support import write

DRIVE = "sr0"
DISK = "sdq"

# Each with its place among the devices, what the kernel says of it, and what udev has found out.
DEVICES = {
    DRIVE: (
        "pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0/0:0:0:0/block/sr0",
        "MAJOR=11\nMINOR=0\nDEVNAME=sr0\nDEVTYPE=disk\n",
        "E:ID_CDROM=1\nE:ID_CDROM_MEDIA=1\nE:ID_CDROM_MEDIA_CD=1\n",
    ),
    DISK: (
        "pci0000:00/0000:00:14.0/usb1/1-1/1-1:1.0/host2/target2:0:0/2:0:0:0/block/sdq",
        "MAJOR=65\nMINOR=0\nDEVNAME=sdq\nDEVTYPE=disk\n",
        "E:ID_BUS=usb\n",
    ),
}
NUMBERS = {DRIVE: (11, 0), DISK: (65, 0)}

# Puts the folders in their places, tells its process number and becomes the launcher. The machine's own
# device files stay where they are, by links: X servers and terminals are among them.
STARTER = textwrap.dedent(
    """\
    set -e
    folder=$1
    shift
    mount --rbind /dev "$folder/own-dev"
    for place in /sys /run /dev; do mount -t tmpfs made-up $place; done
    ln -s "$folder"/own-dev/* /dev
    cp -a --remove-destination "$folder/made-up/." /
    echo $$ > "$folder/number.new"
    mv "$folder/number.new" "$folder/number"
    exec "$@"
    """
)


class MockedDrive:
    def __init__(self, folder):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="mocked-", dir=folder))
        self._number = self._folder / "number"
        self._medium = self._folder / "medium"
        for path in (self._medium, self._folder / "own-dev"):
            path.mkdir()
        for name in DEVICES:
            self._describe(name, self._folder / "made-up")

    @staticmethod
    def missing():
        """Why there can be none here; nothing when there can."""
        if os.geteuid() != 0:
            return "mounting a file system and making a device file takes root"
        if subprocess.run(["unshare", "-m", "true"], capture_output=True).returncode != 0:
            return "this machine allows no mount table of one's own"
        return None

    def _describe(self, name, root):
        path, events, record = DEVICES[name]
        number = "%d:%d" % NUMBERS[name]
        device = root / "sys/devices" / path
        write(device / "uevent", events)
        write(device / "dev", number + "\n")
        write(device / "removable", "1\n")
        write(root / "run/udev/data" / ("b" + number), record)
        for link, target in (
            (device / "subsystem", root / "sys/class/block"),
            (root / "sys/class/block" / name, device),
            (root / "sys/dev/block" / number, device),
        ):
            link.parent.mkdir(parents=True, exist_ok=True)
            link.symlink_to(os.path.relpath(target, link.parent))
        node = root / "dev" / name
        node.parent.mkdir(exist_ok=True)
        os.mknod(node, 0o60660, os.makedev(*NUMBERS[name]))

    def command(self):
        """What goes before the program so that it finds the drive."""
        return ["unshare", "-m", "sh", "-c", STARTER, "sh", str(self._folder)]

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
