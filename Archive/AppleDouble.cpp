// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/AppleDouble.h"

#include <cstdint>

namespace zpk_archive {

namespace {

constexpr std::uint32_t kMagic = 0x00051607;
constexpr std::uint32_t kVersion2 = 0x00020000;
constexpr std::size_t kFillerSize = 16;
constexpr std::size_t kHeaderSize = 26;
constexpr std::size_t kEntrySize = 12;
constexpr std::uint32_t kResourceForkEntry = 2;
constexpr std::uint32_t kFinderInfoEntry = 9;
constexpr std::size_t kEntryLimit = 64;

constexpr std::size_t kFinderInfoSize = 32;
constexpr std::size_t kFinderInfoPadding = 2;
constexpr std::uint32_t kAttributeMagic = 0x41545452;  // "ATTR"
constexpr std::size_t kAttributeHeaderSize = 36;
constexpr std::size_t kAttributeEntrySize = 11;  // Before the name.
constexpr std::size_t kFillerAttributes = 12;

void put(std::string& bytes, std::uint64_t value, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>(value >> shift & 0xff));
    }
}

std::size_t aligned(std::size_t offset) {
    return (offset + 3) & ~std::size_t{3};
}

std::size_t tableEntrySize(const std::string& name) {
    return aligned(kAttributeEntrySize + name.size() + 1);
}

/// Finder info that is anything but 32 bytes with something in them goes into the table, as does an empty
/// resource fork: their own places cannot tell such values from none.
bool hasOwnPlace(const std::string& name, const std::string& value) {
    if (name == kFinderInfoName) {
        return value.size() == kFinderInfoSize && value.find_first_not_of('\0') != std::string::npos;
    }
    return name == kResourceForkName && !value.empty();
}

std::string encodeTable(const AttributeMap& table, std::size_t fileOffset) {
    std::size_t dataStart = fileOffset + kAttributeHeaderSize;
    std::size_t dataLength = 0;
    for (const auto& [name, value] : table) {
        dataStart += tableEntrySize(name);
        dataLength += value.size();
    }
    std::string bytes;
    put(bytes, kAttributeMagic, 4);
    put(bytes, 0, 4);
    put(bytes, dataStart + dataLength, 4);
    put(bytes, dataStart, 4);
    put(bytes, dataLength, 4);
    bytes.append(kFillerAttributes, '\0');
    put(bytes, 0, 2);
    put(bytes, table.size(), 2);
    std::string data;
    for (const auto& [name, value] : table) {
        put(bytes, dataStart + data.size(), 4);
        put(bytes, value.size(), 4);
        put(bytes, 0, 2);
        put(bytes, name.size() + 1, 1);
        bytes += name;
        bytes.append(tableEntrySize(name) - kAttributeEntrySize - name.size(), '\0');
        data += value;
    }
    return bytes + data;
}

/// Reads big-endian numbers out of the file; anything outside it makes the whole invalid.
class Reader {
public:
    explicit Reader(std::string_view bytes) : m_bytes(bytes) {}

    std::uint32_t number(std::size_t offset, std::size_t size) {
        std::uint32_t value = 0;
        for (char byte : piece(offset, size)) {
            value = value << 8 | static_cast<unsigned char>(byte);
        }
        return value;
    }

    std::string_view piece(std::size_t offset, std::size_t size) {
        if (offset > m_bytes.size() || size > m_bytes.size() - offset) {
            m_valid = false;
            return {};
        }
        return m_bytes.substr(offset, size);
    }

    /// A piece that is kept. Pieces that overlap could make a small file stand for gigabytes, so all that are
    /// kept are together no more than the file.
    std::string_view value(std::size_t offset, std::size_t size) {
        const std::string_view bytes = piece(offset, size);
        m_valid = m_valid && bytes.size() <= m_left;
        m_left -= m_valid ? bytes.size() : 0;
        return m_valid ? bytes : std::string_view();
    }

    void reject() { m_valid = false; }
    bool valid() const { return m_valid; }

private:
    std::string_view m_bytes;
    std::size_t m_left = m_bytes.size();
    bool m_valid = true;
};

void decodeTable(Reader& reader, std::size_t offset, AttributeMap& attributes) {
    std::size_t count = reader.number(offset + 34, 2);
    std::size_t at = offset + kAttributeHeaderSize;
    for (std::size_t i = 0; i < count && reader.valid(); ++i) {
        std::size_t dataOffset = reader.number(at, 4);
        std::size_t dataSize = reader.number(at + 4, 4);
        std::size_t nameSize = reader.number(at + 10, 1);
        std::string_view name = reader.piece(at + kAttributeEntrySize, nameSize);
        std::string_view value = reader.value(dataOffset, dataSize);
        bool named = nameSize > 1 && nameSize - 1 <= kAttributeNameLimit && name.ends_with('\0') &&
                     name.find('\0') == nameSize - 1;
        if (!reader.valid() || !named) {
            reader.reject();
            return;
        }
        attributes[std::string(name.substr(0, nameSize - 1))] = value;
        at += aligned(kAttributeEntrySize + nameSize);
    }
}

void decodeFinderInfo(Reader& reader, std::size_t offset, std::size_t size, AttributeMap& attributes) {
    std::string_view info = reader.piece(offset, std::min(size, kFinderInfoSize));
    reader.piece(offset, size);
    if (size < kFinderInfoSize) {
        reader.reject();
        return;
    }
    if (info.find_first_not_of('\0') != std::string_view::npos) {
        attributes[kFinderInfoName] = info;
    }
    std::size_t table = offset + kFinderInfoSize + kFinderInfoPadding;
    bool roomForTable = size >= kFinderInfoSize + kFinderInfoPadding + kAttributeHeaderSize;
    if (roomForTable && reader.number(table, 4) == kAttributeMagic) {
        decodeTable(reader, table, attributes);
    }
}

}  // namespace

std::string encodeAppleDouble(const AttributeMap& attributes) {
    AttributeMap table;
    std::string finderInfo(kFinderInfoSize, '\0');
    std::string resourceFork;
    for (const auto& [name, value] : attributes) {
        if (!hasOwnPlace(name, value)) {
            table[name] = value;
        } else {
            (name == kFinderInfoName ? finderInfo : resourceFork) = value;
        }
    }
    constexpr std::size_t kInfoOffset = kHeaderSize + 2 * kEntrySize;
    finderInfo.append(kFinderInfoPadding, '\0');
    if (!table.empty()) {
        finderInfo += encodeTable(table, kInfoOffset + finderInfo.size());
    }
    std::string bytes;
    put(bytes, kMagic, 4);
    put(bytes, kVersion2, 4);
    bytes.append(kFillerSize, '\0');
    put(bytes, 2, 2);
    put(bytes, kFinderInfoEntry, 4);
    put(bytes, kInfoOffset, 4);
    put(bytes, finderInfo.size(), 4);
    put(bytes, kResourceForkEntry, 4);
    put(bytes, kInfoOffset + finderInfo.size(), 4);
    put(bytes, resourceFork.size(), 4);
    return bytes + finderInfo + resourceFork;
}

std::optional<AttributeMap> decodeAppleDouble(std::string_view bytes) {
    Reader reader(bytes);
    std::size_t entries = reader.number(24, 2);
    if (!reader.valid() || reader.number(0, 4) != kMagic || reader.number(4, 4) != kVersion2 ||
        entries > kEntryLimit) {
        return std::nullopt;
    }
    AttributeMap attributes;
    for (std::size_t i = 0; i < entries && reader.valid(); ++i) {
        std::size_t at = kHeaderSize + i * kEntrySize;
        std::uint32_t kind = reader.number(at, 4);
        std::size_t offset = reader.number(at + 4, 4);
        std::size_t size = reader.number(at + 8, 4);
        if (kind == kFinderInfoEntry) {
            decodeFinderInfo(reader, offset, size, attributes);
        } else if (kind == kResourceForkEntry && size > 0) {
            attributes[kResourceForkName] = reader.value(offset, size);
        } else {
            reader.piece(offset, size);
        }
    }
    return reader.valid() ? std::optional(attributes) : std::nullopt;
}

}  // namespace zpk_archive
