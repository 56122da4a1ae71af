# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Every program and library of the template bundle, and the program at the beginning of a run file: what they
need of the machine, and how they are hardened."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import textwrap
import unittest

from elf_file import ElfFile, carried_faults, static_faults

BUNDLE = pathlib.Path(os.environ["ZPK_BUNDLE"]).resolve() / "Contents"
# The program at the beginning of a run file, and the one that is compressed in it.
RUN_PROGRAMS = [pathlib.Path(path).resolve() for path in os.environ["ZPK_RUN_PROGRAMS"].split(":")]
SECOND_STAGE = BUNDLE / "Frameworks/Zephyrkit-desktop"


def elf_files(folder):
    for path in sorted(folder.rglob("*")):
        if path.is_file() and path.open("rb").read(4) == b"\x7fELF":
            yield path


class BundleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        programs = [BUNDLE / "Linux/Zephyrkit", BUNDLE / "Helpers/ditto", *RUN_PROGRAMS]
        cls.static = [ElfFile(path) for path in programs]
        cls.frameworks = [ElfFile(path) for path in elf_files(BUNDLE / "Frameworks")]
        cls.windows = cls.frameworks + [ElfFile(path) for path in elf_files(BUNDLE / "PlugIns")]
        # The loader looks in the folder itself alone.
        cls.carried = {elf.name: elf for elf in cls.frameworks if elf.path.parent == BUNDLE / "Frameworks"}

    @classmethod
    def tearDownClass(cls):
        print("\n%-34s %-8s %-6s %-8s %s" % ("file", "RELRO", "Linux", "GLIBC", "CET"))
        for elf in cls.static + cls.windows:
            kernel = "%d.%d" % elf.kernel if elf.kernel else "-"
            words = (elf.name, elf.relro, kernel, elf.highest_c_library() or "-", " ".join(elf.control_flow) or "-")
            print("%-34s %-8s %-6s %-8s %s" % words)

    def test_programs_start_on_every_machine(self):
        for elf in self.static:
            with self.subTest(elf.name):
                self.assertEqual(list(static_faults(elf)), [])

    def test_launcher_is_without_what_weighs_much(self):
        """Number formats of the C++ library, which its streams bring along: half a megabyte."""
        program = (BUNDLE / "Linux/Zephyrkit").read_bytes()
        self.assertIn(b"NSt6thread6_StateE", program)
        self.assertNotIn(b"NSt7__cxx118numpunctIcEE", program)

    def test_the_program_of_a_run_file_is_without_what_it_never_comes_to(self):
        # Parts of the C library, by words of theirs.
        program = RUN_PROGRAMS[-1].read_bytes()
        for word in (b"/etc/resolv.conf", b"/etc/host.conf", b"/locale.alias"):
            with self.subTest(word):
                self.assertFalse(word in program)

    def test_windows_need_nothing_outside(self):
        self.assertGreater(len(self.frameworks), 70)
        self.assertTrue(SECOND_STAGE.is_file())
        for elf in self.windows:
            search_path = "$ORIGIN" if elf.path == SECOND_STAGE else None
            with self.subTest(elf.name):
                self.assertEqual(list(carried_faults(elf, self.carried, search_path)), [])

    def test_own_parts_of_the_windows_are_bound_at_once(self):
        for elf in self.windows:
            if elf.path == SECOND_STAGE or elf.path.parent == BUNDLE / "PlugIns":
                with self.subTest(elf.name):
                    self.assertEqual(elf.relro, "full")

    def test_second_stage_finds_its_libraries_beside_itself(self):
        self.assertEqual(ElfFile(SECOND_STAGE).search_paths, ["$ORIGIN"])

    def test_no_other_file_is_a_program(self):
        known = {elf.path for elf in self.static + self.windows}
        self.assertEqual([path for path in elf_files(BUNDLE) if path not in known], [])


START = """
    .globl _start
    _start: mov $60, %eax
    xor %edi, %edi
    syscall
"""


def kernel_note(major, minor):
    return textwrap.dedent(f"""
        .section .note.ABI-tag, "a", @note
        .long 4, 16, 1
        .asciz "GNU"
        .long 0, {major}, {minor}, 0
        .text
    """)


STACK = '.section .note.GNU-stack, "", @progbits\n.text\n'


class FaultsTest(unittest.TestCase):
    """Each fault is found in a file that has it."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-elf-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def build(self, name, source, *options):
        assembly = self.folder / f"{name}.s"
        assembly.write_text(STACK + source)
        subprocess.run(["gcc", "-nostdlib", "-s", "-Wl,-z,relro", *options, "-o", self.folder / name, assembly],
                       check=True, cwd=self.folder)
        return ElfFile(self.folder / name)

    def program(self, *options, source=kernel_note(3, 2) + START):
        return list(static_faults(self.build("program", source, *(options or ("-static", "-no-pie")))))

    def library(self, *options, source="", carried=(), search_path=None):
        elf = self.build("libx.so", source, "-shared", *options)
        return list(carried_faults(elf, {each.name: each for each in carried}, search_path))

    # Without data a program has nothing to relocate, and no segment that says so.
    DATA = '.section .data.rel.ro, "aw"\n.quad _start\n.text\n'

    def test_a_good_program_has_none(self):
        self.assertEqual(self.program(source=kernel_note(3, 2) + self.DATA + START), [])

    def test_interpreter_and_libraries(self):
        found = self.program("-no-pie", "-Wl,--no-as-needed", "-lc")
        self.assertIn("has an interpreter", found)
        self.assertIn("needs libc.so.6", found)

    def test_position_independence(self):
        self.assertIn("is position-independent", self.program("-static-pie"))

    def test_kernels(self):
        self.assertIn("wants Linux 3.3", self.program(source=kernel_note(3, 3) + START))
        self.assertIn("does not say which Linux it wants", self.program(source=START))
        self.assertIn("wants Linux 3.18", self.library(source=kernel_note(3, 18)))
        self.assertNotIn("wants Linux 3.17", self.library(source=kernel_note(3, 17)))

    def test_stack(self):
        self.assertIn("wants an executable stack", self.program("-static", "-no-pie", "-Wl,-z,execstack"))

    def test_relocated_data(self):
        self.assertIn("leaves writable what the loader has relocated", self.library("-Wl,-z,norelro"))
        self.assertEqual(self.build("libx.so", "", "-shared", "-Wl,-z,lazy").relro, "partial")
        self.assertEqual(self.build("libx.so", "", "-shared", "-Wl,-z,now").relro, "full")

    def test_symbols(self):
        unstripped = self.folder / "unstripped"
        (self.folder / "x.s").write_text(STACK + kernel_note(3, 2) + START)
        subprocess.run(["gcc", "-nostdlib", "-static", "-no-pie", "-o", unstripped, self.folder / "x.s"], check=True)
        self.assertIn("is not stripped", list(static_faults(ElfFile(unstripped))))

    def test_changed_text(self):
        found = self.library("-Wl,-z,notext", source=".globl f\nf: .quad f\n")
        self.assertIn("is changed where it is executed", found)

    def test_library_outside(self):
        other = self.build("liby.so", ".globl y\ny: ret\n", "-shared", "-Wl,-soname,liby.so")
        options = ("-Wl,--no-as-needed", "-L.", "-ly")
        self.assertEqual(self.library(*options), ["needs liby.so, which is not carried"])
        self.assertEqual(self.library(*options, carried=[other]), [])

    def versioned(self, *versions):
        (self.folder / "map").write_text("".join(f"{version} {{ global: y_{version}; }};\n" for version in versions))
        source = "".join(f".globl y_{version}\ny_{version}: ret\n" for version in versions)
        return self.build("liby.so", source, "-shared", "-Wl,-soname,liby.so", "-Wl,--version-script=map")

    def test_symbol_version_that_is_not_carried(self):
        newer = self.versioned("Y_1", "Y_2")
        user = self.build("libx.so", "call y_Y_2@PLT\n", "-shared", "-Wl,--no-as-needed", "-L.", "-ly")
        self.assertEqual(user.versions_needed, {"liby.so": {"Y_2"}})
        self.assertEqual(list(carried_faults(user, {"liby.so": newer})), [])
        older = self.versioned("Y_1")
        self.assertEqual(list(carried_faults(user, {"liby.so": older})),
                         ["needs Y_2, which the carried liby.so has not"])

    def test_search_paths(self):
        for tags in ("--enable-new-dtags", "--disable-new-dtags"):
            path = ("-Wl,-rpath,$ORIGIN", f"-Wl,{tags}")
            self.assertEqual(self.library(*path), ["looks for libraries in $ORIGIN"])
            self.assertEqual(self.library(*path, search_path="$ORIGIN"), [])
            self.assertEqual(self.library("-Wl,-rpath,/opt", f"-Wl,{tags}", search_path="$ORIGIN"),
                             ["looks for libraries in /opt"])

    def test_highest_version_is_compared_by_number(self):
        elf = self.build("libx.so", "", "-shared")
        elf.versions_needed = {"libc.so.6": {"GLIBC_2.4", "GLIBC_2.14", "GLIBC_2.2.5", "GLIBC_PRIVATE"}}
        self.assertEqual(elf.highest_c_library(), "2.14")

    def test_control_flow_is_stated_where_it_is(self):
        (self.folder / "x.c").write_text("int f(void) { return 1; }\n")
        subprocess.run(["gcc", "-nostdlib", "-shared", "-fPIC", "-fcf-protection=full", "-o", "x.so", "x.c"],
                       check=True, cwd=self.folder)
        self.assertEqual(ElfFile(self.folder / "x.so").control_flow, ["IBT", "SHSTK"])
        self.assertEqual(self.build("libx.so", "", "-shared").control_flow, [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
