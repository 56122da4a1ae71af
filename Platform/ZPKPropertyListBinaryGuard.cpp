// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKPropertyListBinaryGuard.h"

#include <cstdint>
#include <vector>

namespace {

/// The upper half of an object's marker.
struct BinaryKind {
    std::uint64_t value;

    bool isArray() const { return value == 0xA || value == 0xC; }
    bool isDictionary() const { return value == 0xD; }
    bool isCollection() const { return isArray() || isDictionary(); }
    bool isWideText() const { return value == 0x6; }
    bool isText() const { return value == 0x5 || value == 0x7 || isWideText(); }
    bool hasLength() const { return isCollection() || (value >= 0x4 && value <= 0x7); }

    /// Bytes of data for each unit of the marker's length.
    std::uint64_t unitLength(std::size_t referenceWidth) const {
        if (isDictionary()) {
            return 2 * referenceWidth;
        }
        if (isArray()) {
            return referenceWidth;
        }
        return isWideText() ? 2 : 1;
    }
};

/// The objects of a binary list and what they refer to.
class BinaryObjects {
public:
    BinaryObjects(std::string_view bytes, std::size_t mostKeys) : m_bytes(bytes), m_mostKeys(mostKeys) {}

    /// Reads the trailer; false when it does not fit the file.
    bool open();

    std::uint64_t count() const { return m_count; }
    std::uint64_t top() const { return m_top; }

    /// Gives the length in bytes of an object's own data and appends the objects that it holds; false
    /// when they do not fit the file.
    bool read(std::uint64_t object, std::uint64_t& outLength,
              std::vector<std::uint64_t>& outReferences) const;

private:
    static constexpr std::size_t kTrailerLength = 32;
    static constexpr std::size_t kHeaderLength = 8;

    std::uint64_t number(std::uint64_t at, std::size_t width) const {
        std::uint64_t value = 0;
        for (std::size_t byte = 0; byte < width; ++byte) {
            value = value << 8 | static_cast<unsigned char>(m_bytes[static_cast<std::size_t>(at) + byte]);
        }
        return value;
    }

    bool fits(std::uint64_t at, std::uint64_t length) const { return at <= m_end && length <= m_end - at; }
    bool readLength(std::uint64_t& at, std::uint64_t& outLength) const;
    bool holdsZero(std::uint64_t at, std::uint64_t units, std::uint64_t width) const;

    std::string_view m_bytes;
    std::size_t m_mostKeys;
    std::uint64_t m_end = 0;
    std::size_t m_offsetWidth = 0;
    std::size_t m_referenceWidth = 0;
    std::uint64_t m_count = 0;
    std::uint64_t m_top = 0;
    std::uint64_t m_table = 0;
};

bool BinaryObjects::open() {
    if (m_bytes.size() < kHeaderLength + kTrailerLength) {
        return false;
    }
    m_end = m_bytes.size() - kTrailerLength;
    m_offsetWidth = static_cast<unsigned char>(m_bytes[static_cast<std::size_t>(m_end) + 6]);
    m_referenceWidth = static_cast<unsigned char>(m_bytes[static_cast<std::size_t>(m_end) + 7]);
    m_count = number(m_end + 8, 8);
    m_top = number(m_end + 16, 8);
    m_table = number(m_end + 24, 8);
    const auto isWidth = [](std::size_t width) { return width >= 1 && width <= 8; };
    return isWidth(m_offsetWidth) && isWidth(m_referenceWidth) && m_table <= m_end &&
           m_count <= (m_end - m_table) / m_offsetWidth && m_top < m_count;
}

/// A length of 15 in the marker stands for a number object that follows.
bool BinaryObjects::readLength(std::uint64_t& at, std::uint64_t& outLength) const {
    outLength = number(at, 1) & 0x0F;
    ++at;
    if (outLength != 0x0F) {
        return true;
    }
    if (!fits(at, 1)) {
        return false;
    }
    const std::size_t width = std::size_t{1} << (number(at, 1) & 0x0F);
    if (width > 8 || !fits(at + 1, width)) {
        return false;
    }
    outLength = number(at + 1, width);
    at += 1 + width;
    return true;
}

/// The library stops the program at a key with such a character, and no text of ours has one.
bool BinaryObjects::holdsZero(std::uint64_t at, std::uint64_t units, std::uint64_t width) const {
    for (std::uint64_t unit = 0; unit < units; ++unit) {
        if (number(at + unit * width, static_cast<std::size_t>(width)) == 0) {
            return true;
        }
    }
    return false;
}

bool BinaryObjects::read(std::uint64_t object, std::uint64_t& outLength,
                         std::vector<std::uint64_t>& outReferences) const {
    std::uint64_t at = number(m_table + object * m_offsetWidth, m_offsetWidth);
    if (!fits(at, 1)) {
        return false;
    }
    outLength = 0;
    const BinaryKind kind{number(at, 1) >> 4};
    if (!kind.hasLength()) {
        return true;
    }
    std::uint64_t count = 0;
    if (!readLength(at, count) || count > m_end || (kind.isDictionary() && count > m_mostKeys)) {
        return false;
    }
    outLength = count * kind.unitLength(m_referenceWidth);
    if (!fits(at, outLength)) {
        return false;
    }
    if (kind.isText() && holdsZero(at, count, kind.unitLength(m_referenceWidth))) {
        return false;
    }
    const std::uint64_t references = kind.isCollection() ? outLength / m_referenceWidth : 0;
    for (std::uint64_t index = 0; index < references; ++index) {
        outReferences.push_back(number(at + index * m_referenceWidth, m_referenceWidth));
    }
    return true;
}

/// Goes through all that the top object holds, each object once.
class BinaryVisit {
public:
    BinaryVisit(const BinaryObjects& objects, std::size_t deepest)
        : m_objects(objects), m_deepest(deepest), m_sizes(static_cast<std::size_t>(objects.count())) {}

    bool isReasonable() {
        if (!enter(m_objects.top())) {
            return false;
        }
        while (!m_open.empty()) {
            if (!step()) {
                return false;
            }
        }
        return true;
    }

private:
    // Room for lists thousands of times larger than any in use; what a list says twice counts twice.
    static constexpr std::uint64_t kMostBytesReadOut = std::uint64_t{256} * 1024 * 1024;
    static constexpr std::uint64_t kBytesOfAnyObject = 64;
    static constexpr std::uint64_t kUnknownSize = 0;
    static constexpr std::uint64_t kSizeBeingCounted = UINT64_MAX;

    struct OpenObject {
        std::uint64_t object;
        std::vector<std::uint64_t> references;
        std::size_t next = 0;
        std::uint64_t size = kBytesOfAnyObject;
    };

    bool enter(std::uint64_t object) {
        OpenObject opened{object, {}};
        std::uint64_t length = 0;
        if (m_open.size() > m_deepest || !m_objects.read(object, length, opened.references)) {
            return false;
        }
        opened.size += length;
        m_sizes[static_cast<std::size_t>(object)] = kSizeBeingCounted;
        m_open.push_back(std::move(opened));
        return true;
    }

    bool step() {
        OpenObject& current = m_open.back();
        if (current.next == current.references.size()) {
            m_sizes[static_cast<std::size_t>(current.object)] = current.size;
            m_open.pop_back();
            return true;
        }
        const std::uint64_t reference = current.references[current.next];
        if (reference >= m_objects.count()) {
            return false;
        }
        const std::uint64_t size = m_sizes[static_cast<std::size_t>(reference)];
        if (size == kSizeBeingCounted) {
            return false;
        }
        if (size == kUnknownSize) {
            return enter(reference);
        }
        current.size += size;
        ++current.next;
        return current.size <= kMostBytesReadOut;
    }

    const BinaryObjects& m_objects;
    std::size_t m_deepest;
    std::vector<std::uint64_t> m_sizes;
    std::vector<OpenObject> m_open;
};

}  // namespace

bool ZPKPropertyListBinaryGuard::isReasonable(std::string_view bytes, std::size_t deepest,
                                              std::size_t mostKeys) {
    BinaryObjects objects(bytes, mostKeys);
    return objects.open() && BinaryVisit(objects, deepest).isReasonable();
}
