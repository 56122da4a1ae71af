// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CpioReader.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "Archive/CpioWriter.h"
#include "Archive/Failure.h"
#include "Archive/PlainStream.h"

namespace zpk_archive {

namespace {

constexpr char kEndMark[] = "TRAILER!!!";

/// No file system takes a link's text of that length; more is not gathered in memory.
constexpr std::uint64_t kLinkTextLimit = std::uint64_t{1} << 20;

constexpr char kCutShort[] = "the archive ends in the middle of this member";
constexpr char kNoHeader[] = "the archive is damaged or ends without its end mark";

}  // namespace

bool CpioReader::fill() {
    if (m_rest.empty()) {
        m_rest = m_stream.next();
    }
    return !m_rest.empty();
}

std::size_t CpioReader::take(std::uint8_t* bytes, std::size_t count) {
    std::size_t done = 0;
    while (done < count && fill()) {
        const std::size_t piece = std::min(count - done, m_rest.size());
        std::memcpy(bytes + done, m_rest.data(), piece);
        m_rest = m_rest.subspan(piece);
        done += piece;
    }
    return done;
}

void CpioReader::skip(std::uint64_t count) {
    while (count > 0) {
        if (!fill()) {
            throw ArchiveFailure(kCutShort);
        }
        const std::size_t piece = static_cast<std::size_t>(std::min<std::uint64_t>(count, m_rest.size()));
        m_rest = m_rest.subspan(piece);
        count -= piece;
    }
}

CpioHeader CpioReader::readHeader() {
    const char* const reason = m_isFirst ? "not a CPIO archive" : kNoHeader;
    m_isFirst = false;
    std::array<std::uint8_t, CpioHeader::kLargestSize> bytes{};
    const std::span<std::uint8_t> magic = std::span(bytes).first(CpioHeader::kMagicSize);
    const std::size_t got = take(magic.data(), magic.size());
    const std::optional<CpioHeader::Form> form = CpioHeader::formOf(magic.first(got));
    if (!form) {
        throw ArchiveFailure(reason);
    }
    const std::size_t left = CpioHeader::sizeOf(*form) - magic.size();
    if (got < magic.size() || take(bytes.data() + magic.size(), left) < left) {
        throw ArchiveFailure(kNoHeader);
    }
    const std::optional<CpioHeader> header = CpioHeader::parse(*form, bytes);
    if (!header) {
        throw ArchiveFailure(reason);
    }
    return *header;
}

std::string CpioReader::readText(std::size_t size) {
    std::string text(size, '\0');
    if (take(reinterpret_cast<std::uint8_t*>(text.data()), size) < size) {
        throw ArchiveFailure(kNoHeader);
    }
    text.resize(text.find_last_not_of('\0') + 1);
    return text;
}

std::optional<Member> CpioReader::next() {
    skip(m_dataLeft);
    skip(m_paddingLeft);
    m_dataLeft = 0;
    const CpioHeader header = readHeader();
    if (header.nameSize > CpioWriter::kNameLimit + 1) {
        throw ArchiveFailure("the archive is damaged (a name of more than 262142 bytes)");
    }
    Member member;
    member.name = readText(header.nameSize);
    skip(header.namePadding());
    m_dataLeft = header.dataSize;
    m_paddingLeft = header.dataPadding();
    if (member.name == kEndMark) {
        return std::nullopt;
    }
    member.mode = header.mode;
    member.size = static_cast<std::int64_t>(header.dataSize);
    member.modifiedSeconds = header.modifiedSeconds;
    member.linkCount = header.linkCount;
    member.device = header.device;
    member.inode = header.inode;
    member.dataComeWithLastName = header.isNewAscii();
    if (S_ISLNK(member.mode)) {
        if (header.dataSize > kLinkTextLimit) {
            throw ArchiveFailure("the archive is damaged (a symbolic link's text of more than 1 MiB)");
        }
        member.symbolicLinkTarget = readText(static_cast<std::size_t>(header.dataSize));
        m_dataLeft = 0;
    }
    return member;
}

std::span<const std::uint8_t> CpioReader::nextData() {
    if (m_dataLeft == 0) {
        return {};
    }
    if (!fill()) {
        throw ArchiveFailure(kCutShort);
    }
    const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(m_dataLeft, m_rest.size()));
    const std::span<const std::uint8_t> bytes = m_rest.first(piece);
    m_rest = m_rest.subspan(piece);
    m_dataLeft -= piece;
    return bytes;
}

std::optional<std::span<const std::uint8_t>> CpioReader::wholeData() {
    if (m_dataLeft > m_rest.size()) {
        return std::nullopt;
    }
    const std::span<const std::uint8_t> bytes = m_rest.first(static_cast<std::size_t>(m_dataLeft));
    m_rest = m_rest.subspan(bytes.size());
    m_dataLeft = 0;
    return bytes;
}

void CpioReader::finish() {
    skip(m_dataLeft);
    m_dataLeft = 0;
    while (fill()) {
        const auto used =
            std::find_if(m_rest.begin(), m_rest.end(), [](std::uint8_t byte) { return byte != 0; });
        m_rest = m_rest.subspan(static_cast<std::size_t>(used - m_rest.begin()));
        if (!m_rest.empty()) {
            std::array<std::uint8_t, CpioHeader::kMagicSize> magic{};
            const std::size_t got = take(magic.data(), magic.size());
            throw ArchiveFailure(CpioHeader::formOf(std::span(magic).first(got))
                                     ? "a second archive follows the first"
                                     : "bytes that are no archive's follow the end mark");
        }
    }
}

}  // namespace zpk_archive
