// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKProgramHeader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>

#include "Tests/Platform/MachineProgram.h"
#include "Tests/Support/TemporaryFolder.h"

using Kind = ZPKProgramHeader::Kind;
using zpk_test::MachineProgram;

namespace {

class ZPKProgramHeaderTest : public ::testing::Test {
protected:
    ZPKProgramHeader header(std::string_view contents) const {
        zpk_test::writeFile(m_path, contents);
        return *ZPKProgramHeader::ofFile(m_path);
    }

    std::string helper(std::string_view contents) const { return header(contents).helper(); }

    zpk_test::TemporaryFolder m_folder;
    const std::string m_path = m_folder / "program";
};

TEST_F(ZPKProgramHeaderTest, KindIsThatOfTheFirstBytes) {
    EXPECT_EQ(header("").kind(), Kind::Empty);
    EXPECT_EQ(header("#").kind(), Kind::Other);
    EXPECT_EQ(header("#!").kind(), Kind::Script);
    EXPECT_EQ(header("# !/bin/sh").kind(), Kind::Other);
    EXPECT_EQ(header(MachineProgram().bytes64()).kind(), Kind::Machine);
    EXPECT_EQ(header("\x7f"
                     "ELF")
                  .kind(),
              Kind::Other)
        << "too short for a program";
}

TEST_F(ZPKProgramHeaderTest, InterpreterIsTheFirstWordOfTheLine) {
    EXPECT_EQ(helper("#!/bin/sh\nrest"), "/bin/sh");
    EXPECT_EQ(helper("#! \t/usr/bin/env  python3 -u\n"), "/usr/bin/env");
    EXPECT_EQ(helper("#!/bin/sh"), "/bin/sh");
    EXPECT_EQ(helper("#!relative/one\n"), "relative/one");
    EXPECT_EQ(helper("#!/bin/sh\r\n"), "/bin/sh\r");
    EXPECT_EQ(helper(std::string_view("#!/bin/sh\0more\n", 15)), "/bin/sh");
    for (const char* const nothing : {"#!", "#!\n/bin/sh\n", "#!  \t", "#! \n"}) {
        EXPECT_EQ(helper(nothing), "") << nothing;
    }
}

TEST_F(ZPKProgramHeaderTest, InterpreterBehindWhatTheKernelReadsIsNone) {
    const std::string longest = "/" + std::string(252, 'x');
    EXPECT_EQ(helper("#!" + longest + "\n"), longest);
    EXPECT_EQ(helper("#!" + longest + "y\n"), "");
    EXPECT_EQ(helper("#!" + std::string(300, ' ') + "/bin/sh\n"), "");
    EXPECT_EQ(helper("#!" + std::string(1'000'000, 'x')), "");
}

TEST_F(ZPKProgramHeaderTest, LoaderOfBothClasses) {
    const MachineProgram program{EM_X86_64, "/lib64/ld.so"};
    EXPECT_EQ(helper(program.bytes64()), "/lib64/ld.so");
    EXPECT_EQ(helper(program.bytes32()), "/lib64/ld.so");
    EXPECT_EQ(helper(MachineProgram().bytes64()), "");
}

TEST_F(ZPKProgramHeaderTest, ProcessorIsNamed) {
    EXPECT_EQ(header(MachineProgram{EM_AARCH64, ""}.bytes64()).processor(), "AArch64");
    EXPECT_EQ(header(MachineProgram{EM_386, ""}.bytes32()).processor(), "Intel 80386");
    EXPECT_EQ(header(MachineProgram{0x4321, ""}.bytes64()).processor(), "number 17185");
    std::string other = MachineProgram{EM_S390, "/lib/ld64.so.1"}.bytes64();
    other[EI_DATA] = ELFDATA2MSB;
    std::swap(other[18], other[19]);
    EXPECT_EQ(header(other).processor(), "IBM S/390");
    EXPECT_EQ(header(other).helper(), "") << "its numbers are in another order";
}

TEST_F(ZPKProgramHeaderTest, RunningProgramIsForThisProcessor) {
    const auto own = ZPKProgramHeader::ofFile("/proc/self/exe");
    ASSERT_TRUE(own);
    EXPECT_TRUE(own->isForThisProcessor());
    EXPECT_TRUE(own->helper().starts_with("/")) << own->helper();
    EXPECT_FALSE(header(MachineProgram{EM_ALPHA, ""}.bytes64()).isForThisProcessor());
    EXPECT_FALSE(header(MachineProgram().bytes32()).isForThisProcessor());
}

// Whatever the file says

TEST_F(ZPKProgramHeaderTest, SegmentThatPointsNowhereNamesNoLoader) {
    const std::uint64_t kFar[] = {1'000'000, 0x7fffffffffffffff, 0x8000000000000000, 0xffffffffffffffff};
    for (const std::uint64_t place : kFar) {
        EXPECT_EQ(helper(MachineProgram{EM_X86_64, "/ld", place}.bytes64()), "") << place;
        EXPECT_EQ(helper(MachineProgram{EM_X86_64, "/ld", 0, place}.bytes64()), "") << place;
    }
    EXPECT_EQ(helper(MachineProgram{EM_X86_64, "/ld", 0, 1}.bytes64()), "");
    EXPECT_EQ(helper(MachineProgram{EM_X86_64, "/ld", 0, 3}.bytes64()), "") << "no zero at its end";
    EXPECT_EQ(helper(MachineProgram{EM_X86_64, "/" + std::string(PATH_MAX, 'x')}.bytes64()), "");
}

TEST_F(ZPKProgramHeaderTest, TableThatPointsNowhereNamesNoLoader) {
    const std::string intact = MachineProgram{EM_X86_64, "/ld"}.bytes64();
    for (const std::size_t place :
         {offsetof(Elf64_Ehdr, e_phoff), offsetof(Elf64_Ehdr, e_phentsize), offsetof(Elf64_Ehdr, e_phnum)}) {
        for (const char value : {'\0', '\x7f', '\xff'}) {
            std::string damaged = intact;
            damaged.replace(place, 2, 2, value);
            const std::string found = helper(damaged);
            EXPECT_TRUE(found.empty() || found == "/ld") << place;
        }
    }
    for (std::size_t size = 0; size < intact.size(); ++size) {
        EXPECT_EQ(helper(intact.substr(0, size)), "") << size;
    }
}

TEST_F(ZPKProgramHeaderTest, ItemsThatAreNoFilesFailAndNobodyWaits) {
    const std::string fifo = m_folder / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0700), 0);
    EXPECT_FALSE(ZPKProgramHeader::ofFile(fifo));
    EXPECT_FALSE(ZPKProgramHeader::ofFile(m_folder.path()));
    EXPECT_FALSE(ZPKProgramHeader::ofFile(m_folder / "none"));
    EXPECT_FALSE(ZPKProgramHeader::ofFile("/dev/zero"));
}

}  // namespace
