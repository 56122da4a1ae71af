// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/ProgramFile.h"

#include <gelf.h>
#include <libelf.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <type_traits>

#include "Base/ZPKDescriptorIO.h"
#include "Platform/ZPKFileHandle.h"

namespace zpk_packager {

namespace {

// A linker writes far less; a header may claim anything.
constexpr std::size_t kLargestPart = std::size_t{1} << 20;
constexpr std::size_t kMostLibraries = 1000;
constexpr std::size_t kLongestFirstLine = 256;

struct ElfFree {
    void operator()(Elf* file) const { ::elf_end(file); }
};
using ElfOwner = std::unique_ptr<Elf, ElfFree>;

void appendParts(std::vector<std::string>& parts, const std::string& list) {
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = std::min(list.find(':', start), list.size());
        parts.push_back(list.substr(start, end - start));
        start = end + 1;
    }
}

/// Whether the header leaves the count of sections to a section, as no program's does: it would be believed
/// whatever it says, and memory taken for it.
template <typename Header>
bool countsElsewhere(const std::string& start) {
    Header header{};
    std::memcpy(&header, start.data(), std::min(start.size(), sizeof header));
    return header.e_shnum == 0 && header.e_shoff != 0;
}

bool countsElsewhere(const std::string& start) {
    const bool isNarrow = start.size() > EI_CLASS && start[EI_CLASS] == ELFCLASS32;
    return isNarrow ? countsElsewhere<Elf32_Ehdr>(start) : countsElsewhere<Elf64_Ehdr>(start);
}

}  // namespace

/// Fills in what machine code says of itself.
class ProgramFileReader {
public:
    ProgramFileReader(Elf* file, ProgramFile& program) : m_file(file), m_program(program) {}

    bool read();

private:
    bool readSegment(const GElf_Phdr& segment);
    void readDynamic(Elf_Data* data);
    std::string stringAt(std::uint64_t offset) const;
    Elf_Data* part(std::uint64_t address, std::uint64_t size, Elf_Type type) const;
    std::uint64_t offsetOf(std::uint64_t address) const;

    Elf* m_file;
    ProgramFile& m_program;
    std::vector<GElf_Phdr> m_segments;
    std::uint64_t m_strings = 0;
    std::uint64_t m_stringsSize = 0;
};

bool ProgramFileReader::read() {
    GElf_Ehdr header;
    std::size_t count = 0;
    if (::gelf_getehdr(m_file, &header) == nullptr || ::elf_getphdrnum(m_file, &count) != 0) {
        return false;
    }
    m_program.m_processor = header.e_machine;
    m_program.m_bits = ::gelf_getclass(m_file) == ELFCLASS32 ? 32 : 64;
    for (std::size_t index = 0; index < std::min<std::size_t>(count, PN_XNUM); ++index) {
        GElf_Phdr segment;
        if (::gelf_getphdr(m_file, static_cast<int>(index), &segment) == nullptr) {
            return false;
        }
        m_segments.push_back(segment);
    }
    return std::all_of(m_segments.begin(), m_segments.end(),
                       [this](const GElf_Phdr& segment) { return readSegment(segment); });
}

bool ProgramFileReader::readSegment(const GElf_Phdr& segment) {
    if (segment.p_type != PT_INTERP && segment.p_type != PT_DYNAMIC) {
        return true;
    }
    const bool isDynamic = segment.p_type == PT_DYNAMIC;
    Elf_Data* const data = part(segment.p_offset, segment.p_filesz, isDynamic ? ELF_T_DYN : ELF_T_BYTE);
    if (data == nullptr) {
        return false;
    }
    if (isDynamic) {
        readDynamic(data);
    } else {
        const std::string text(static_cast<const char*>(data->d_buf), data->d_size);
        m_program.m_interpreter = text.c_str();
    }
    return true;
}

void ProgramFileReader::readDynamic(Elf_Data* data) {
    std::vector<GElf_Dyn> entries;
    GElf_Dyn entry;
    for (int index = 0; ::gelf_getdyn(data, index, &entry) != nullptr && entry.d_tag != DT_NULL; ++index) {
        if (entry.d_tag == DT_STRTAB) {
            m_strings = offsetOf(entry.d_un.d_ptr);
        } else if (entry.d_tag == DT_STRSZ) {
            m_stringsSize = entry.d_un.d_val;
        } else {
            entries.push_back(entry);
        }
    }
    for (const GElf_Dyn& each : entries) {
        if (each.d_tag == DT_NEEDED && m_program.m_libraries.size() < kMostLibraries) {
            m_program.m_libraries.push_back(stringAt(each.d_un.d_val));
        } else if (each.d_tag == DT_RPATH || each.d_tag == DT_RUNPATH) {
            appendParts(m_program.m_libraryFolders, stringAt(each.d_un.d_val));
        }
    }
}

std::string ProgramFileReader::stringAt(std::uint64_t offset) const {
    if (offset >= m_stringsSize) {
        return {};
    }
    const Elf_Data* const strings = part(m_strings, m_stringsSize, ELF_T_BYTE);
    if (strings == nullptr || strings->d_buf == nullptr || offset >= strings->d_size) {
        return {};
    }
    const std::string_view all(static_cast<const char*>(strings->d_buf), strings->d_size);
    return std::string(all.substr(offset, all.find('\0', offset) - offset));
}

/// The bytes of the file, in this machine's order; null where there are not as many or far too many.
Elf_Data* ProgramFileReader::part(std::uint64_t offset, std::uint64_t size, Elf_Type type) const {
    if (size == 0 || size > kLargestPart || offset > INT64_MAX) {
        return nullptr;
    }
    Elf_Data* const data = ::elf_getdata_rawchunk(m_file, static_cast<std::int64_t>(offset), size, type);
    return data == nullptr || data->d_buf == nullptr ? nullptr : data;
}

/// Where in the file what the loader places at the address stands; the end of all files for nowhere.
std::uint64_t ProgramFileReader::offsetOf(std::uint64_t address) const {
    for (const GElf_Phdr& segment : m_segments) {
        if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
            address - segment.p_vaddr < segment.p_filesz) {
            return segment.p_offset + (address - segment.p_vaddr);
        }
    }
    return UINT64_MAX;
}

ZPKResult<ProgramFile> ProgramFile::read(const std::string& path) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    return file ? read(file->descriptor(), path) : ZPKResult<ProgramFile>(file.failure());
}

ZPKResult<ProgramFile> ProgramFile::read(int descriptor, const std::string& name) {
    std::string start(kLongestFirstLine, '\0');
    const ssize_t length = ZPKDescriptorIO::readWholeAt(descriptor, start.data(), start.size(), 0);
    start.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    ProgramFile program;
    if (start.starts_with("#!")) {
        program.m_kind = Kind::Script;
        const std::size_t first = std::min(start.find_first_not_of(" \t", 2), start.size());
        program.m_interpreter = start.substr(first, start.find_first_of(" \t\r\n", first) - first);
    } else if (start.starts_with(std::string_view(ELFMAG, SELFMAG))) {
        program.m_kind = Kind::Machine;
        ::elf_version(EV_CURRENT);
        const ElfOwner elf(countsElsewhere(start) ? nullptr : ::elf_begin(descriptor, ELF_C_READ, nullptr));
        if (!elf || !ProgramFileReader(elf.get(), program).read()) {
            return ZPKFailure(name, "its headers are damaged");
        }
    }
    return program;
}

}  // namespace zpk_packager
