// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CpioWriter.h"

#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "Archive/Failure.h"
#include "Archive/GzipWriter.h"

namespace zpk_archive {

namespace {

/// The header has eleven octal digits for the size and the time, and six for the rest.
constexpr std::uint64_t kLongLimit = std::uint64_t{1} << 33;
constexpr unsigned kShortBits = 18;
constexpr std::uint64_t kShortMask = (std::uint64_t{1} << kShortBits) - 1;

void appendOctal(std::string& header, std::uint64_t value, std::size_t digits) {
    header.append(digits, '0');
    for (auto digit = header.rbegin(); value > 0 && digits > 0; ++digit, --digits, value >>= 3) {
        *digit = static_cast<char>('0' + (value & 7));
    }
}

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

void CpioWriter::writeHeader(const Member& member, std::uint64_t dataSize) {
    std::string header = "070707";
    // One number stands in two fields, so that there is room for any number of files.
    appendOctal(header, member.inode >> kShortBits & kShortMask, 6);
    appendOctal(header, member.inode & kShortMask, 6);
    appendOctal(header, member.mode, 6);
    header.append("000000000000");  // Owner and group.
    appendOctal(header, std::min<std::uint64_t>(member.linkCount, kShortMask), 6);
    header.append("000000");
    const std::int64_t latest = static_cast<std::int64_t>(kLongLimit) - 1;
    appendOctal(header,
                static_cast<std::uint64_t>(std::clamp<std::int64_t>(member.modifiedSeconds, 0, latest)), 11);
    appendOctal(header, member.name.size() + 1, 6);
    appendOctal(header, dataSize, 11);
    header.append(member.name).push_back('\0');
    m_output.write(bytesOf(header));
}

void CpioWriter::startMember(const Member& member) {
    const bool isLink = S_ISLNK(member.mode);
    const std::uint64_t size =
        isLink ? member.symbolicLinkTarget.size() : static_cast<std::uint64_t>(member.size);
    if (size >= kLongLimit) {
        throw MemberFailure("a CPIO archive cannot hold a file of 8 GiB or more");
    }
    if (member.name.size() > kNameLimit) {
        throw MemberFailure("a CPIO archive cannot hold a path of more than 262142 bytes");
    }
    writeHeader(member, size);
    if (isLink) {
        m_output.write(bytesOf(member.symbolicLinkTarget));
    }
}

void CpioWriter::writeData(std::span<const std::uint8_t> bytes) {
    m_output.write(bytes);
}

void CpioWriter::finish() {
    Member endMark;
    endMark.name = "TRAILER!!!";
    writeHeader(endMark, 0);
}

}  // namespace zpk_archive
