// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKLoadableFile.h"

#include <elf.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKRegularFile.h"

namespace {

/// Far more parts than a linker makes.
constexpr std::size_t kMostSegments = 128;

/// The same for what a library says to the loader, and for a name in it.
constexpr std::size_t kMostEntries = 4096;
constexpr std::size_t kLongestName = 256;

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

    /// How many bytes there are from there on.
    std::uint64_t restFrom(std::uint64_t offset) const { return m_size - std::min(offset, m_size); }

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

using Segments = std::vector<Elf64_Phdr>;

/// The table of sections stands at the end of a file; the loader has no use for it.
bool isWhole(const File& file, const Elf64_Ehdr& header, Segments& segments) {
    const auto isInside = [&](const Elf64_Phdr& segment) {
        return segment.p_type != PT_LOAD || file.holds(segment.p_offset, segment.p_filesz);
    };
    segments.resize(header.e_phnum);
    return file.holds(header.e_shoff, std::uint64_t{header.e_shentsize} * header.e_shnum) &&
           file.read(header.e_phoff, segments.data(), segments.size()) &&
           std::ranges::all_of(segments, isInside);
}

/// Where in the file the byte is that the loader puts to an address.
std::optional<std::uint64_t> offsetOf(std::uint64_t address, const Segments& segments) {
    for (const Elf64_Phdr& segment : segments) {
        if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
            address - segment.p_vaddr < segment.p_filesz) {
            return address - segment.p_vaddr + segment.p_offset;
        }
    }
    return std::nullopt;
}

/// What the file says to the loader: nothing where there is nothing to say.
std::optional<std::vector<Elf64_Dyn>> entriesForLoader(const File& file, const Segments& segments) {
    const auto found = std::ranges::find(segments, Elf64_Word{PT_DYNAMIC}, &Elf64_Phdr::p_type);
    std::vector<Elf64_Dyn> entries;
    if (found == segments.end()) {
        return entries;
    }
    const std::uint64_t count = found->p_filesz / sizeof(Elf64_Dyn);
    if (count > kMostEntries) {
        return std::nullopt;
    }
    entries.resize(count);
    if (!file.read(found->p_offset, entries.data(), entries.size())) {
        return std::nullopt;
    }
    entries.erase(std::ranges::find(entries, Elf64_Sxword{DT_NULL}, &Elf64_Dyn::d_tag), entries.end());
    return entries;
}

std::optional<std::string> nameAt(const File& file, std::uint64_t offset) {
    std::string name(std::min<std::uint64_t>(kLongestName, file.restFrom(offset)), '\0');
    if (!file.read(offset, name.data(), name.size()) || name.find('\0') == std::string::npos) {
        return std::nullopt;
    }
    name.resize(name.find('\0'));
    return name;
}

/// Nothing when the file does not hold what it says.
std::optional<std::vector<std::string>> namesOfLibraries(const File& file, const Segments& segments) {
    const auto entries = entriesForLoader(file, segments);
    std::vector<std::string> names;
    if (!entries) {
        return std::nullopt;
    }
    const auto texts = std::ranges::find(*entries, Elf64_Sxword{DT_STRTAB}, &Elf64_Dyn::d_tag);
    for (const Elf64_Dyn& entry : *entries) {
        if (entry.d_tag != DT_NEEDED) {
            continue;
        }
        const auto place =
            texts == entries->end() ? std::nullopt : offsetOf(texts->d_un.d_ptr + entry.d_un.d_val, segments);
        std::optional<std::string> name = place ? nameAt(file, *place) : std::nullopt;
        if (!name) {
            return std::nullopt;
        }
        names.push_back(std::move(*name));
    }
    return names;
}

}  // namespace

ZPKOutcome ZPKLoadableFile::check(const std::string& path) {
    const ZPKResult<std::vector<std::string>> needed = neededLibraries(path);
    return needed ? ZPKOutcome() : needed.failure();
}

ZPKResult<std::vector<std::string>> ZPKLoadableFile::neededLibraries(const std::string& path) {
    File file(path);
    if (!file.open()) {
        return ZPKFailure::ofSystem(path, errno);
    }
    Elf64_Ehdr header{};
    if (!file.read(0, &header, 1) || !isForThisMachine(header)) {
        return ZPKFailure(path, "no library or program for this processor");
    }
    Segments segments;
    if (!isWhole(file, header, segments)) {
        return ZPKFailure(path, "cut short");
    }
    std::optional<std::vector<std::string>> names = namesOfLibraries(file, segments);
    if (!names) {
        return ZPKFailure(path, "does not say which libraries it needs");
    }
    return std::move(*names);
}
