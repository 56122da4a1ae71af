// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Base/ZPKEncodingTable.h"

/// Turns a text into UTF-8 that came in an encoding of before Unicode, or in GB18030, by tables of its own:
/// no file and no library of the machine is asked. In all of them a byte below 0x80 at the start of a
/// character is ASCII.
class ZPKTextDecoder {
public:
    /// Null for an encoding that is not known. The name is one of those that are in use for it; capitals and
    /// whatever is no letter or digit do not count.
    static std::unique_ptr<ZPKTextDecoder> forEncoding(std::string_view name);

    /// Appends the next piece of the input to `text`; a character may begin in one piece and end in the next.
    /// False when the bytes are none of this encoding; what stands before them has been appended then.
    bool decode(std::string_view bytes, std::string& text);

    /// Whether no character is left half read.
    bool isBetweenCharacters() const { return m_begun.empty(); }

private:
    /// What the next bytes are. A length of 0 asks for more of them.
    struct Character {
        std::size_t length;
        char32_t value;
    };
    static const Character kMoreIsNeeded;
    static const Character kRefused;
    /// Of bytes that are not empty, and begin with none of ASCII.
    using Reader = Character (ZPKTextDecoder::*)(std::string_view bytes) const;

    explicit ZPKTextDecoder(const ZPKNamedEncoding& encoding);
    static Reader readerOf(ZPKEncodingForm form);
    bool finishBegun(std::string_view& bytes, std::string& text);

    Character readOneByte(std::string_view bytes) const;
    Character readShiftJIS(std::string_view bytes) const;
    Character readEUCJP(std::string_view bytes) const;
    Character readEUCKR(std::string_view bytes) const;
    Character readUnifiedHangul(std::string_view bytes) const;
    Character readGB18030(std::string_view bytes) const;
    Character readFourBytes(std::string_view bytes) const;
    Character readBig5(std::string_view bytes) const;
    Character readTwoBytes(std::string_view bytes, std::size_t row,
                           std::size_t (*columnOf)(unsigned int second), std::size_t columns) const;

    Reader m_read;
    std::vector<char16_t> m_characters;
    /// EUC-JP: its codes of three bytes. GB18030: those of four bytes within the basic plane.
    std::vector<char16_t> m_longer;
    /// The beginning of a character.
    std::string m_begun;
};
