# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What an ELF file asks of the machine that it is started on, as binutils' readelf tells, and what is wrong with
it in a bundle that is to open everywhere."""

import os
import re
import subprocess


class ElfFile:
    def __init__(self, path):
        self.path = path
        self.name = path.name
        text = subprocess.run(
            ["readelf", "-W", "-h", "-l", "-d", "-n", "-S", "-V", path], capture_output=True, text=True, check=True,
            errors="replace", env=dict(os.environ, LC_ALL="C")).stdout
        self.type = re.search(r"^  Type:\s+(\w+)", text, re.MULTILINE)[1]
        self.dynamic = re.findall(r"^ 0x[0-9a-f]+ \((\w+)\)\s+(.*)$", text, re.MULTILINE)
        self.interpreter = "INTERP " in text
        self.needed = self._bracketed("NEEDED")
        self.search_paths = self._bracketed("RPATH") + self._bracketed("RUNPATH")
        self.text_relocations = bool(self._values("TEXTREL")) or any("TEXTREL" in each for each in self._values("FLAGS"))
        stack = re.search(r"^  GNU_STACK .*?([RWE ]{3}) 0x\w+$", text, re.MULTILINE)
        self.executable_stack = stack is None or "E" in stack[1]
        # Memory that begins as zeros holds nothing that was relocated.
        self.data = re.search(r"^  LOAD +0x\w+ 0x\w+ 0x\w+ 0x0*[1-9a-f]\w* +0x\w+ +RW", text, re.MULTILINE) is not None
        self.relro = self._relro(text)
        self.kernel = self._kernel(text)
        self.control_flow = sorted(set(re.findall(r"\b(IBT|SHSTK)\b", " ".join(re.findall("x86 feature: .*", text)))))
        self.symbols = bool(re.search(r"^  \[ *\d+\] \.(symtab|debug_\w+|zdebug_\w+) ", text, re.MULTILINE))
        self.versions_needed = self._versions_needed(text)
        self.versions_defined = self._versions_defined(text)

    def _values(self, tag):
        return [value for name, value in self.dynamic if name == tag]

    def _bracketed(self, tag):
        return [re.search(r"\[(.*)\]", value)[1] for value in self._values(tag)]

    def _relro(self, text):
        if "GNU_RELRO" not in text:
            return "none"
        now = self._values("BIND_NOW") or any("NOW" in value for value in self._values("FLAGS") + self._values("FLAGS_1"))
        return "full" if now else "partial"

    @staticmethod
    def _kernel(text):
        """The oldest Linux that the file says it runs on, or None."""
        found = re.search(r"NT_GNU_ABI_TAG.*OS: Linux, ABI: (\d+)\.(\d+)", text)
        return (int(found[1]), int(found[2])) if found else None

    @staticmethod
    def _versions_needed(text):
        needs = {}
        section = re.search(r"^Version needs section .*?(?=^\S|\Z)", text, re.MULTILINE | re.DOTALL)
        for line in section[0].splitlines() if section else ():
            if file := re.search(r"File: (\S+)", line):
                name = file[1]
            elif version := re.search(r"Name: (\S+)", line):
                needs.setdefault(name, set()).add(version[1])
        return needs

    @staticmethod
    def _versions_defined(text):
        section = re.search(r"^Version definition section .*?(?=^\S|\Z)", text, re.MULTILINE | re.DOTALL)
        return set(re.findall(r"Name: (\S+)", section[0])) if section else set()

    def highest_c_library(self):
        """The newest version of the C library that it takes symbols of, such as 2.36; empty without any."""
        names = {name for names in self.versions_needed.values() for name in names}
        numbers = [tuple(map(int, name[6:].split("."))) for name in names if re.fullmatch(r"GLIBC_[\d.]+", name)]
        return ".".join(map(str, max(numbers))) if numbers else ""


def faults(elf, newest_kernel):
    """What is wrong wherever the file lies. A kernel is a pair such as (3, 17)."""
    if elf.executable_stack:
        yield "wants an executable stack"
    if elf.text_relocations:
        yield "is changed where it is executed"
    if elf.data and elf.relro == "none":
        yield "leaves writable what the loader has relocated"
    if elf.symbols:
        yield "is not stripped"
    if elf.kernel and elf.kernel > newest_kernel:
        yield "wants Linux %d.%d" % elf.kernel


def static_faults(elf):
    """What is wrong with a program that is to start on every machine."""
    yield from faults(elf, (3, 2))
    if elf.type != "EXEC":
        yield "is position-independent"
    if elf.interpreter:
        yield "has an interpreter"
    if elf.needed:
        yield "needs " + ", ".join(elf.needed)
    if not elf.kernel:
        yield "does not say which Linux it wants"


def carried_faults(elf, carried, search_path=None):
    """What is wrong with a file that finds its libraries, by name, among those carried."""
    yield from faults(elf, (3, 17))
    for name in elf.needed:
        if name not in carried:
            yield f"needs {name}, which is not carried"
    for name, versions in sorted(elf.versions_needed.items()):
        missing = versions - carried[name].versions_defined if name in carried else set()
        for version in sorted(missing):
            yield f"needs {version}, which the carried {name} has not"
    for path in elf.search_paths:
        if path != search_path:
            yield f"looks for libraries in {path}"
