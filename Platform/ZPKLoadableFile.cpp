// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKLoadableFile.h"

#include <elf.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKRegularFile.h"

namespace {

/// Far more parts than a linker makes.
constexpr std::size_t kMostSegments = 128;

/// The size of an open file and what is read of it.
class File {
public:
    explicit File(const std::string& path) : m_file(ZPKRegularFile::open(path)) {}

    bool open() {
        struct stat attributes {};
        if (!m_file.isOpen() || ::fstat(m_file.get(), &attributes) != 0) {
            return false;
        }
        m_size = static_cast<std::uint64_t>(attributes.st_size);
        return true;
    }

    bool holds(std::uint64_t offset, std::uint64_t size) const {
        return offset <= m_size && size <= m_size - offset;
    }

    template <typename Record>
    bool read(std::uint64_t offset, Record* records, std::size_t count) const {
        const std::size_t size = sizeof(Record) * count;
        return holds(offset, size) &&
               ZPKDescriptorIO::readWholeAt(m_file.get(), records, size, static_cast<off_t>(offset)) ==
                   static_cast<ssize_t>(size);
    }

private:
    ZPKFileDescriptor m_file;
    std::uint64_t m_size = 0;
};

bool isForThisMachine(const Elf64_Ehdr& header) {
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == ELFCLASS64 &&
           header.e_ident[EI_DATA] == ELFDATA2LSB && header.e_machine == EM_X86_64 &&
           header.e_phentsize == sizeof(Elf64_Phdr) && header.e_phnum > 0 && header.e_phnum <= kMostSegments;
}

/// The table of sections stands at the end of a file; the loader has no use for it.
bool isWhole(const File& file, const Elf64_Ehdr& header) {
    std::vector<Elf64_Phdr> segments(header.e_phnum);
    const auto isInside = [&](const Elf64_Phdr& segment) {
        return segment.p_type != PT_LOAD || file.holds(segment.p_offset, segment.p_filesz);
    };
    return file.holds(header.e_shoff, std::uint64_t{header.e_shentsize} * header.e_shnum) &&
           file.read(header.e_phoff, segments.data(), segments.size()) &&
           std::ranges::all_of(segments, isInside);
}

}  // namespace

ZPKOutcome ZPKLoadableFile::check(const std::string& path) {
    File file(path);
    if (!file.open()) {
        return ZPKFailure::ofSystem(path, errno);
    }
    Elf64_Ehdr header{};
    if (!file.read(0, &header, 1) || !isForThisMachine(header)) {
        return ZPKFailure(path, "no library or program for this processor");
    }
    if (!isWhole(file, header)) {
        return ZPKFailure(path, "cut short");
    }
    return {};
}
