// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKProgramHeader.h"

#include <elf.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "Base/ZPKDescriptorIO.h"
#include "Platform/ZPKFileHandle.h"

namespace {

/// As much as the kernel looks at to find out what a file is, the line with the interpreter included.
constexpr std::size_t kStartSize = 256;

/// Far more parts than a linker makes.
constexpr std::size_t kMostSegments = 128;

#if defined(__aarch64__)
constexpr std::uint16_t kThisMachine = EM_AARCH64;
#else
constexpr std::uint16_t kThisMachine = EM_X86_64;
#endif

struct Processor {
    std::uint16_t machine;
    std::string_view name;
};

constexpr Processor kProcessors[] = {
    {EM_386, "Intel 80386"},     {EM_X86_64, "x86-64"}, {EM_ARM, "ARM"},          {EM_AARCH64, "AArch64"},
    {EM_RISCV, "RISC-V"},        {EM_PPC, "PowerPC"},   {EM_PPC64, "PowerPC64"},  {EM_S390, "IBM S/390"},
    {EM_MIPS, "MIPS"},           {EM_SPARC, "SPARC"},   {EM_SPARCV9, "SPARC V9"}, {EM_IA_64, "Itanium"},
    {EM_LOONGARCH, "LoongArch"},
};

bool isForThisOrder(const std::string& start) {
    constexpr char kThisOrder = std::endian::native == std::endian::little ? ELFDATA2LSB : ELFDATA2MSB;
    return start[EI_DATA] == kThisOrder;
}

/// Up to `size` bytes from `offset` on: what is there. An offset that no file can have gives nothing.
std::string bytesAt(const ZPKFileHandle& file, std::uint64_t offset, std::size_t size) {
    std::string bytes(size, '\0');
    const ssize_t count =
        ZPKDescriptorIO::readWholeAt(file.descriptor(), bytes.data(), size, static_cast<off_t>(offset));
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return bytes;
}

/// The word behind the `#!` of a script.
std::string interpreterOf(const std::string& start) {
    constexpr const char* kBlanks = " \t";
    const std::size_t begin = start.find_first_not_of(kBlanks, 2);
    if (begin == std::string::npos) {
        return {};
    }
    const std::size_t end = start.find_first_of(std::string_view(" \t\n\0", 4), begin);
    // One that goes on behind what the kernel looks at is none to it.
    return end == std::string::npos && start.size() == kStartSize ? "" : start.substr(begin, end - begin);
}

/// The text of a path that a segment holds, without the zero at its end.
template <typename Segment>
std::string pathIn(const ZPKFileHandle& file, const Segment& segment) {
    if (segment.p_filesz < 2 || segment.p_filesz > PATH_MAX) {
        return {};
    }
    const std::string path = bytesAt(file, segment.p_offset, static_cast<std::size_t>(segment.p_filesz));
    return path.size() == segment.p_filesz && path.back() == '\0' ? path.c_str() : "";
}

template <typename Header, typename Segment>
std::string loaderOf(const ZPKFileHandle& file, const std::string& start) {
    Header header;
    if (start.size() < sizeof(header)) {
        return {};
    }
    std::memcpy(&header, start.data(), sizeof(header));
    if (header.e_phentsize != sizeof(Segment)) {
        return {};
    }
    const std::size_t count = std::min<std::size_t>(header.e_phnum, kMostSegments);
    const std::string table = bytesAt(file, header.e_phoff, count * sizeof(Segment));
    for (std::size_t at = 0; at + sizeof(Segment) <= table.size(); at += sizeof(Segment)) {
        Segment segment;
        std::memcpy(&segment, table.data() + at, sizeof(segment));
        if (segment.p_type == PT_INTERP) {
            return pathIn(file, segment);
        }
    }
    return {};
}

}  // namespace

ZPKResult<ZPKProgramHeader> ZPKProgramHeader::ofFile(const std::string& path) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    if (!file) {
        return file.failure();
    }
    return ZPKProgramHeader(*file);
}

ZPKProgramHeader::ZPKProgramHeader(const ZPKFileHandle& file) {
    const std::string start = bytesAt(file, 0, kStartSize);
    if (start.empty()) {
        m_kind = Kind::Empty;
    } else if (start.starts_with("#!")) {
        m_kind = Kind::Script;
        m_helper = interpreterOf(start);
    } else if (start.starts_with(ELFMAG) && start.size() >= sizeof(Elf32_Ehdr)) {
        m_kind = Kind::Machine;
        readMachineProgram(file, start);
    }
}

void ZPKProgramHeader::readMachineProgram(const ZPKFileHandle& file, const std::string& start) {
    m_has64Bits = start[EI_CLASS] == ELFCLASS64;
    // At the same place in both classes.
    static_assert(offsetof(Elf32_Ehdr, e_machine) == offsetof(Elf64_Ehdr, e_machine));
    std::memcpy(&m_machine, start.data() + offsetof(Elf32_Ehdr, e_machine), sizeof(m_machine));
    if (!isForThisOrder(start)) {
        m_machine = static_cast<std::uint16_t>(m_machine << 8U | m_machine >> 8U);
        return;
    }
    m_helper = m_has64Bits ? loaderOf<Elf64_Ehdr, Elf64_Phdr>(file, start)
                           : loaderOf<Elf32_Ehdr, Elf32_Phdr>(file, start);
}

std::string ZPKProgramHeader::processor() const {
    const auto* const known = std::find_if(std::begin(kProcessors), std::end(kProcessors),
                                           [this](const Processor& row) { return row.machine == m_machine; });
    return known != std::end(kProcessors) ? std::string(known->name) : "number " + std::to_string(m_machine);
}

bool ZPKProgramHeader::isForThisProcessor() const {
    return m_machine == kThisMachine && m_has64Bits == (sizeof(void*) == sizeof(std::uint64_t));
}
