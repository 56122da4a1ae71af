// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKLoadableFile.h"

#include <elf.h>
#include <gmock/gmock.h>

#include <cstdint>
#include <cstring>
#include <limits>

#include "Tests/Support/TemporaryFolder.h"

namespace {

using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

const char* const kNone = "no library or program for this processor";

class ZPKLoadableFileTest : public ::testing::Test {
protected:
    /// Why the bytes are not taken; empty when they are.
    std::string refusal(const std::string& bytes) const {
        writeFile(m_folder / "file", bytes);
        const ZPKOutcome outcome = ZPKLoadableFile::check(m_folder / "file");
        return outcome ? "" : outcome.failure().reason();
    }

    /// The bytes with another value where the file says what it has for the loader.
    std::string withDynamicSegment(std::uint64_t Elf64_Phdr::*field, std::uint64_t value) const {
        std::string bytes = m_whole;
        (dynamicSegment(bytes)->*field) = value;
        return bytes;
    }

    /// The bytes with another tag and value in the first entry of that tag.
    std::string withDynamicEntry(Elf64_Sxword tag, Elf64_Sxword other, std::uint64_t value) const {
        std::string bytes = m_whole;
        auto* entry = reinterpret_cast<Elf64_Dyn*>(bytes.data() + dynamicSegment(bytes)->p_offset);
        while (entry->d_tag != tag) {
            ++entry;
        }
        entry->d_tag = other;
        entry->d_un.d_val = value;
        return bytes;
    }

    static Elf64_Phdr* dynamicSegment(std::string& bytes) {
        const auto* const header = reinterpret_cast<const Elf64_Ehdr*>(bytes.data());
        auto* segment = reinterpret_cast<Elf64_Phdr*>(bytes.data() + header->e_phoff);
        while (segment->p_type != PT_DYNAMIC) {
            ++segment;
        }
        return segment;
    }

    /// A library of this machine.
    const std::string m_whole = readFile("/proc/self/exe");
    TemporaryFolder m_folder;
};

/// The bytes with another value in their header.
template <typename Value>
std::string with(std::string bytes, Value Elf64_Ehdr::*field, Value value) {
    Elf64_Ehdr header;
    std::memcpy(&header, bytes.data(), sizeof(header));
    header.*field = value;
    return bytes.replace(0, sizeof(header), reinterpret_cast<const char*>(&header), sizeof(header));
}

TEST_F(ZPKLoadableFileTest, ALibraryOrProgramIsTaken) {
    EXPECT_EQ(refusal(m_whole), "");
    EXPECT_EQ(refusal(m_whole + "more"), "");
}

TEST_F(ZPKLoadableFileTest, AnyOtherFileIsNot) {
    for (const std::string& bytes : {std::string(), std::string("x"), std::string("#!/bin/sh\n"),
                                     std::string(4096, '\0'), m_whole.substr(1)}) {
        EXPECT_EQ(refusal(bytes), kNone);
    }
    EXPECT_EQ(refusal(with<Elf64_Half>(m_whole, &Elf64_Ehdr::e_machine, EM_AARCH64)), kNone);
    EXPECT_EQ(refusal(with<Elf64_Half>(m_whole, &Elf64_Ehdr::e_phnum, 0)), kNone);
    EXPECT_EQ(refusal(with<Elf64_Half>(m_whole, &Elf64_Ehdr::e_phnum, 0xfffe)), kNone);
    EXPECT_EQ(refusal(with<Elf64_Half>(m_whole, &Elf64_Ehdr::e_phentsize, 1)), kNone);
    std::string ofAnotherClass = m_whole;
    ofAnotherClass[EI_CLASS] = ELFCLASS32;
    EXPECT_EQ(refusal(ofAnotherClass), kNone);
}

TEST_F(ZPKLoadableFileTest, WhatIsCutShortIsNot) {
    for (const std::size_t size : {m_whole.size() - 1, m_whole.size() / 2, std::size_t{100}}) {
        EXPECT_EQ(refusal(m_whole.substr(0, size)), "cut short") << size;
    }
    const auto far = std::numeric_limits<Elf64_Off>::max() - 1;
    EXPECT_EQ(refusal(with<Elf64_Off>(m_whole, &Elf64_Ehdr::e_phoff, far)), "cut short");
    EXPECT_EQ(refusal(with<Elf64_Off>(m_whole, &Elf64_Ehdr::e_shoff, far)), "cut short");
}

TEST_F(ZPKLoadableFileTest, SegmentsBeyondTheEndAreSeenWithoutSections) {
    // Sections are for other tools, and may have been taken away.
    std::string bare = with<Elf64_Off>(m_whole, &Elf64_Ehdr::e_shoff, 0);
    bare = with<Elf64_Half>(bare, &Elf64_Ehdr::e_shnum, 0);
    EXPECT_EQ(refusal(bare), "");
    EXPECT_EQ(refusal(bare.substr(0, 4096)), "cut short");
}

TEST_F(ZPKLoadableFileTest, TheLibrariesThatItNeedsAreNamed) {
    const auto needed = ZPKLoadableFile::neededLibraries("/proc/self/exe");
    ASSERT_TRUE(needed) << needed.failure().message();
    EXPECT_THAT(*needed, IsSupersetOf({"libc.so.6", "libstdc++.so.6"}));
    const auto ofLoader = ZPKLoadableFile::neededLibraries("/lib64/ld-linux-x86-64.so.2");
    ASSERT_TRUE(ofLoader) << ofLoader.failure().message();
    EXPECT_THAT(*ofLoader, IsEmpty());
}

TEST_F(ZPKLoadableFileTest, WhatDoesNotSayWhichLibrariesItNeedsIsNot) {
    const std::string mute = "does not say which libraries it needs";
    const auto far = std::numeric_limits<std::uint64_t>::max() - 1;
    EXPECT_EQ(refusal(withDynamicSegment(&Elf64_Phdr::p_offset, far)), mute);
    EXPECT_EQ(refusal(withDynamicSegment(&Elf64_Phdr::p_filesz, far)), mute);
    EXPECT_EQ(refusal(withDynamicSegment(&Elf64_Phdr::p_filesz, m_whole.size())), mute);
    for (const Elf64_Sxword tag : {DT_STRTAB, DT_NEEDED}) {
        EXPECT_EQ(refusal(withDynamicEntry(tag, tag, far / 2)), mute) << tag;
    }
    EXPECT_EQ(refusal(withDynamicEntry(DT_STRTAB, DT_DEBUG, 0)), mute);
}

TEST_F(ZPKLoadableFileTest, AFailureNamesTheFile) {
    const ZPKOutcome outcome = ZPKLoadableFile::check(m_folder / "missing");
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), m_folder / "missing: No such file or directory");
}

}  // namespace
