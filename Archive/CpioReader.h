// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "Archive/CpioHeader.h"
#include "Archive/Member.h"

namespace zpk_archive {

class PlainStream;

/// Reads the members of a CPIO archive one after the other. Where a header is due there is a header, or
/// the archive is damaged: nothing is searched for, since what a search finds may be the inside of a file.
/// Keeps nothing of the members before. Operations throw ArchiveFailure.
class CpioReader {
public:
    explicit CpioReader(PlainStream& stream) : m_stream(stream) {}

    /// The next member; nothing at the archive's end mark. What is left of the data of the member before
    /// is passed over.
    std::optional<Member> next();

    /// The next bytes of the member's data, valid until the next call; empty at their end.
    std::span<const std::uint8_t> nextData();

    /// All of the member's data, valid until the next call, where they are at hand in one piece and none of
    /// them was given yet; else nothing, and `nextData` gives them.
    std::optional<std::span<const std::uint8_t>> wholeData();

    /// Takes what follows the end mark, so that the last checksum is verified too. Only zeros may follow.
    void finish();

private:
    CpioHeader readHeader();
    std::string readText(std::size_t size);
    void skip(std::uint64_t count);
    bool fill();
    std::size_t take(std::uint8_t* bytes, std::size_t count);

    PlainStream& m_stream;
    std::span<const std::uint8_t> m_rest;  ///< Of the stream's block at hand.
    bool m_isFirst = true;
    std::uint64_t m_dataLeft = 0;
    std::size_t m_paddingLeft = 0;
};

}  // namespace zpk_archive
