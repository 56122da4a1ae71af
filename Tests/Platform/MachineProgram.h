// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <elf.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace zpk_test {

/// The beginning of a program for this machine's order of bytes: header, one segment, and the loader's path
/// when there is one. Nothing that could run.
struct MachineProgram {
    std::uint16_t machine = EM_X86_64;
    std::string loader;
    /// What the segment says of the loader's path; 0 for what is true.
    std::uint64_t offset = 0;
    std::uint64_t size = 0;

    template <typename Header, typename Segment>
    std::string bytes(unsigned char elfClass) const {
        Header header{};
        std::copy_n(ELFMAG, SELFMAG, header.e_ident);
        header.e_ident[EI_CLASS] = elfClass;
        header.e_ident[EI_DATA] = ELFDATA2LSB;
        header.e_ident[EI_VERSION] = EV_CURRENT;
        header.e_type = ET_EXEC;
        header.e_machine = machine;
        header.e_version = EV_CURRENT;
        header.e_phoff = sizeof(Header);
        header.e_ehsize = sizeof(Header);
        header.e_phentsize = sizeof(Segment);
        header.e_phnum = 1;
        Segment segment{};
        segment.p_type = loader.empty() ? PT_NOTE : PT_INTERP;
        segment.p_offset =
            static_cast<decltype(segment.p_offset)>(offset != 0 ? offset : sizeof(Header) + sizeof(Segment));
        segment.p_filesz = static_cast<decltype(segment.p_filesz)>(size != 0 ? size : loader.size() + 1);
        return std::string(reinterpret_cast<const char*>(&header), sizeof(header)) +
               std::string(reinterpret_cast<const char*>(&segment), sizeof(segment)) + loader + '\0';
    }

    std::string bytes64() const { return bytes<Elf64_Ehdr, Elf64_Phdr>(ELFCLASS64); }
    std::string bytes32() const { return bytes<Elf32_Ehdr, Elf32_Phdr>(ELFCLASS32); }
};

}  // namespace zpk_test
