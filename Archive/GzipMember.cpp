// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/GzipMember.h"

#include <isa-l/crc.h>

#include <span>
#include <vector>

#include "Archive/Failure.h"
#include "Archive/InputFile.h"

namespace zpk_archive {

namespace {

constexpr std::uint8_t kHasHeaderChecksum = 0x02;
constexpr std::uint8_t kHasExtra = 0x04;
constexpr std::uint8_t kHasName = 0x08;
constexpr std::uint8_t kHasComment = 0x10;
constexpr std::uint8_t kReservedFlags = 0xe0;

constexpr std::uint8_t kDeflateMethod = 8;
constexpr std::uint8_t kUnixHost = 3;
constexpr std::uint8_t kFieldId[2] = {'Z', 'K'};
constexpr std::size_t kFieldSize = 8;
constexpr std::size_t kHeaderLimit = std::size_t{256} * 1024;

void putLittle(std::uint8_t* bytes, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

std::uint32_t getLittle(std::span<const std::uint8_t> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = bytes.size(); i > 0; --i) {
        value = value << 8 | bytes[i - 1];
    }
    return value;
}

/// The header as it is read, kept for its own checksum.
class HeaderBytes {
public:
    explicit HeaderBytes(InputFile& input) : m_input(input) {}

    std::span<const std::uint8_t> take(std::size_t count) {
        std::size_t start = m_bytes.size();
        if (start + count > kHeaderLimit) {
            throw ArchiveFailure("a gzip header is too long");
        }
        m_bytes.resize(start + count);
        if (m_input.read(m_bytes.data() + start, count) != count) {
            throw ArchiveFailure("the archive ends inside a gzip header");
        }
        return std::span(m_bytes).subspan(start, count);
    }

    void skipText() {
        while (take(1)[0] != 0) {
        }
    }

    std::uint32_t checksum() const { return ::crc32_gzip_refl(0, m_bytes.data(), m_bytes.size()) & 0xffff; }

private:
    InputFile& m_input;
    std::vector<std::uint8_t> m_bytes;
};

std::optional<GzipMemberSizes> findSizes(std::span<const std::uint8_t> extra) {
    while (extra.size() >= 4) {
        std::size_t length = getLittle(extra.subspan(2, 2));
        if (length > extra.size() - 4) {
            break;
        }
        if (extra[0] == kFieldId[0] && extra[1] == kFieldId[1] && length == kFieldSize) {
            GzipMemberSizes sizes{getLittle(extra.subspan(4, 4)), getLittle(extra.subspan(8, 4))};
            bool credible = sizes.packed > kGzipMemberTrailerSize && sizes.packed <= kGzipMemberPackedLimit &&
                            sizes.plain <= kGzipMemberPlainSize;
            return credible ? std::optional(sizes) : std::nullopt;
        }
        extra = extra.subspan(4 + length);
    }
    return std::nullopt;
}

}  // namespace

std::array<std::uint8_t, kGzipMemberHeaderSize> makeGzipMemberHeader(const GzipMemberSizes& sizes) {
    // The time is left at 0, so that the same tree gives the same bytes.
    std::array<std::uint8_t, kGzipMemberHeaderSize> header = {
        0x1f, 0x8b,      kDeflateMethod, kHasExtra, 0,           0,           0,          0,
        0,    kUnixHost, 4 + kFieldSize, 0,         kFieldId[0], kFieldId[1], kFieldSize, 0};
    putLittle(header.data() + 16, sizes.packed);
    putLittle(header.data() + 20, sizes.plain);
    return header;
}

std::array<std::uint8_t, kGzipMemberTrailerSize> makeGzipMemberTrailer(std::uint32_t crc,
                                                                       std::uint32_t plainSize) {
    std::array<std::uint8_t, kGzipMemberTrailerSize> trailer{};
    putLittle(trailer.data(), crc);
    putLittle(trailer.data() + 4, plainSize);
    return trailer;
}

std::optional<GzipMemberSizes> readGzipMemberHeader(InputFile& input) {
    HeaderBytes header(input);
    std::span<const std::uint8_t> fixed = header.take(10);
    std::uint8_t flags = fixed[3];
    if (fixed[0] != 0x1f || fixed[1] != 0x8b || fixed[2] != kDeflateMethod || (flags & kReservedFlags) != 0) {
        throw ArchiveFailure("a gzip header is damaged");
    }
    std::optional<GzipMemberSizes> sizes;
    if ((flags & kHasExtra) != 0) {
        std::size_t length = getLittle(header.take(2));
        sizes = findSizes(header.take(length));
    }
    if ((flags & kHasName) != 0) {
        header.skipText();
    }
    if ((flags & kHasComment) != 0) {
        header.skipText();
    }
    if ((flags & kHasHeaderChecksum) != 0) {
        std::uint32_t expected = header.checksum();
        if (getLittle(header.take(2)) != expected) {
            throw ArchiveFailure("a gzip header is damaged");
        }
    }
    return sizes;
}

}  // namespace zpk_archive
