// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKTextDecoder.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <iterator>

#include "Base/ZPKUnicode.h"

namespace {

constexpr std::size_t kNowhere = SIZE_MAX;
constexpr char32_t kNoCharacter = ZPKEncodingTable::kNoCharacter;
constexpr unsigned int kFirstBeyondASCII = 0x80;

unsigned int byteAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

bool isWithin(unsigned int byte, unsigned int first, unsigned int last) {
    return byte >= first && byte <= last;
}

/// Which of the bytes from `first` to `last`, of which there are `before` others before.
std::size_t indexWithin(unsigned int byte, unsigned int first, unsigned int last, std::size_t before = 0) {
    return isWithin(byte, first, last) ? before + byte - first : kNowhere;
}

char32_t characterAt(const std::vector<char16_t>& characters, std::size_t row, std::size_t column,
                     std::size_t columns) {
    const bool isCell = row != kNowhere && column != kNowhere && row * columns + column < characters.size();
    return isCell ? characters[row * columns + column] : kNoCharacter;
}

/// Rows and columns of most of the larger encodings.
constexpr unsigned int kFirstOfEUC = 0xA1;
constexpr unsigned int kLastOfEUC = 0xFE;
constexpr std::size_t kColumnsOfEUC = kLastOfEUC - kFirstOfEUC + 1;

std::size_t indexOfEUC(unsigned int byte) {
    return indexWithin(byte, kFirstOfEUC, kLastOfEUC);
}

/// The narrow katakana, which are one byte in Shift_JIS and two in EUC-JP.
char32_t narrowKatakana(unsigned int byte) {
    constexpr char32_t kFirst = 0xFF61;
    return isWithin(byte, 0xA1, 0xDF) ? kFirst + byte - 0xA1 : kNoCharacter;
}

/// GB18030 gives what its codes of two bytes leave of the basic plane codes of four, in order.
std::vector<char16_t> allBut(const std::vector<char16_t>& characters) {
    std::vector<bool> isTaken(0x10000, false);
    std::for_each(characters.begin(), characters.end(), [&](char16_t each) { isTaken[each] = true; });
    std::vector<char16_t> found;
    for (char32_t each = kFirstBeyondASCII; each < 0x10000; ++each) {
        if (!isTaken[each] && !ZPKUnicode::isHighSurrogate(each) && !ZPKUnicode::isLowSurrogate(each)) {
            found.push_back(static_cast<char16_t>(each));
        }
    }
    return found;
}

std::string plainName(std::string_view name) {
    std::string plain;
    for (const char character : name) {
        if (isWithin(static_cast<unsigned char>(character), 'A', 'Z')) {
            plain += static_cast<char>(character - 'A' + 'a');
        } else if ((character >= 'a' && character <= 'z') || (character >= '0' && character <= '9')) {
            plain += character;
        }
    }
    return plain;
}

}  // namespace

const ZPKTextDecoder::Character ZPKTextDecoder::kMoreIsNeeded{0, kNoCharacter};
const ZPKTextDecoder::Character ZPKTextDecoder::kRefused{1, kNoCharacter};

std::unique_ptr<ZPKTextDecoder> ZPKTextDecoder::forEncoding(std::string_view name) {
    const std::string plain = plainName(name);
    for (const ZPKNamedEncoding& encoding : ZPKEncodingTable::kEncodings) {
        if (encoding.name == plain) {
            return std::unique_ptr<ZPKTextDecoder>(new ZPKTextDecoder(encoding));
        }
    }
    return nullptr;
}

ZPKTextDecoder::ZPKTextDecoder(const ZPKNamedEncoding& encoding)
    : m_read(readerOf(encoding.form)), m_characters(encoding.first->characters()) {
    if (encoding.form == ZPKEncodingForm::GB18030) {
        m_longer = allBut(m_characters);
    } else if (encoding.form == ZPKEncodingForm::EUCJP) {
        m_longer = encoding.second->characters();
    } else if (encoding.second != nullptr) {
        const std::vector<char16_t> others = encoding.second->characters();
        m_characters.resize(others.size(), ZPKEncodingTable::kNoCharacter);
        for (std::size_t code = 0; code < others.size(); ++code) {
            m_characters[code] = others[code] != kNoCharacter ? others[code] : m_characters[code];
        }
    }
}

ZPKTextDecoder::Reader ZPKTextDecoder::readerOf(ZPKEncodingForm form) {
    switch (form) {
        case ZPKEncodingForm::OneByte:
            return &ZPKTextDecoder::readOneByte;
        case ZPKEncodingForm::ShiftJIS:
            return &ZPKTextDecoder::readShiftJIS;
        case ZPKEncodingForm::EUCJP:
            return &ZPKTextDecoder::readEUCJP;
        case ZPKEncodingForm::EUCKR:
            return &ZPKTextDecoder::readEUCKR;
        case ZPKEncodingForm::UnifiedHangul:
            return &ZPKTextDecoder::readUnifiedHangul;
        case ZPKEncodingForm::GB18030:
            return &ZPKTextDecoder::readGB18030;
        case ZPKEncodingForm::Big5:
            return &ZPKTextDecoder::readBig5;
    }
    assert(false);
    return nullptr;
}

bool ZPKTextDecoder::decode(std::string_view bytes, std::string& text) {
    if (!finishBegun(bytes, text)) {
        return false;
    }
    while (!bytes.empty()) {
        const auto ascii = std::find_if(bytes.begin(), bytes.end(), [](char each) {
            return static_cast<unsigned char>(each) >= kFirstBeyondASCII;
        });
        text.append(bytes.begin(), ascii);
        bytes.remove_prefix(static_cast<std::size_t>(ascii - bytes.begin()));
        if (bytes.empty()) {
            break;
        }
        const Character next = (this->*m_read)(bytes);
        if (next.length == 0) {
            m_begun = bytes;
            break;
        }
        if (next.value == kNoCharacter) {
            return false;
        }
        ZPKUnicode::append(text, next.value);
        bytes.remove_prefix(next.length);
    }
    return true;
}

/// Takes from `bytes` what the character lacks that began in the piece before.
bool ZPKTextDecoder::finishBegun(std::string_view& bytes, std::string& text) {
    while (!m_begun.empty() && !bytes.empty()) {
        m_begun += bytes.front();
        bytes.remove_prefix(1);
        const Character next = (this->*m_read)(m_begun);
        if (next.length != 0) {
            m_begun.clear();
            if (next.value == kNoCharacter) {
                return false;
            }
            ZPKUnicode::append(text, next.value);
        }
    }
    return true;
}

ZPKTextDecoder::Character ZPKTextDecoder::readOneByte(std::string_view bytes) const {
    return {1, m_characters[byteAt(bytes, 0) - kFirstBeyondASCII]};
}

/// A code of two bytes, of which the first is in `row` of the table, or in none.
ZPKTextDecoder::Character ZPKTextDecoder::readTwoBytes(std::string_view bytes, std::size_t row,
                                                       std::size_t (*columnOf)(unsigned int second),
                                                       std::size_t columns) const {
    if (row == kNowhere) {
        return kRefused;
    }
    if (bytes.size() < 2) {
        return kMoreIsNeeded;
    }
    return {2, characterAt(m_characters, row, columnOf(byteAt(bytes, 1)), columns)};
}

ZPKTextDecoder::Character ZPKTextDecoder::readShiftJIS(std::string_view bytes) const {
    const unsigned int first = byteAt(bytes, 0);
    if (const char32_t narrow = narrowKatakana(first); narrow != kNoCharacter) {
        return {1, narrow};
    }
    const std::size_t row = std::min(indexWithin(first, 0x81, 0x9F), indexWithin(first, 0xE0, 0xFC, 31));
    const auto column = [](unsigned int second) {
        return std::min(indexWithin(second, 0x40, 0x7E), indexWithin(second, 0x80, 0xFC, 63));
    };
    return readTwoBytes(bytes, row, column, 188);
}

ZPKTextDecoder::Character ZPKTextDecoder::readEUCJP(std::string_view bytes) const {
    constexpr unsigned int kNarrow = 0x8E;
    constexpr unsigned int kLonger = 0x8F;
    const unsigned int first = byteAt(bytes, 0);
    if (first != kNarrow && first != kLonger) {
        return readTwoBytes(bytes, indexOfEUC(first), &indexOfEUC, kColumnsOfEUC);
    }
    const std::size_t length = first == kLonger ? 3 : 2;
    if (bytes.size() < length) {
        return kMoreIsNeeded;
    }
    if (first == kNarrow) {
        return {length, narrowKatakana(byteAt(bytes, 1))};
    }
    return {length,
            characterAt(m_longer, indexOfEUC(byteAt(bytes, 1)), indexOfEUC(byteAt(bytes, 2)), kColumnsOfEUC)};
}

/// A part of what Windows has made of it: the two begin in another place.
ZPKTextDecoder::Character ZPKTextDecoder::readEUCKR(std::string_view bytes) const {
    const bool isCode = indexOfEUC(byteAt(bytes, 0)) != kNowhere &&
                        (bytes.size() < 2 || indexOfEUC(byteAt(bytes, 1)) != kNowhere);
    return isCode ? readUnifiedHangul(bytes) : kRefused;
}

ZPKTextDecoder::Character ZPKTextDecoder::readUnifiedHangul(std::string_view bytes) const {
    const auto column = [](unsigned int second) {
        return std::min({indexWithin(second, 'A', 'Z'), indexWithin(second, 'a', 'z', 26),
                         indexWithin(second, 0x81, 0xFE, 52)});
    };
    return readTwoBytes(bytes, indexWithin(byteAt(bytes, 0), 0x81, 0xFE), column, 178);
}

ZPKTextDecoder::Character ZPKTextDecoder::readGB18030(std::string_view bytes) const {
    if (bytes.size() >= 2 && isWithin(byteAt(bytes, 1), '0', '9')) {
        return readFourBytes(bytes);
    }
    const auto column = [](unsigned int second) {
        return std::min(indexWithin(second, 0x40, 0x7E), indexWithin(second, 0x80, 0xFE, 63));
    };
    return readTwoBytes(bytes, indexWithin(byteAt(bytes, 0), 0x81, 0xFE), column, 190);
}

ZPKTextDecoder::Character ZPKTextDecoder::readFourBytes(std::string_view bytes) const {
    constexpr std::size_t kLength = 4;
    constexpr unsigned int kFirst[kLength] = {0x81, '0', 0x81, '0'};
    constexpr unsigned int kLast[kLength] = {0xFE, '9', 0xFE, '9'};
    std::size_t number = 0;
    for (std::size_t at = 0; at < std::min(kLength, bytes.size()); ++at) {
        const std::size_t index = indexWithin(byteAt(bytes, at), kFirst[at], kLast[at]);
        if (index == kNowhere) {
            return kRefused;
        }
        number = number * (kLast[at] - kFirst[at] + 1) + index;
    }
    if (bytes.size() < kLength) {
        return kMoreIsNeeded;
    }
    constexpr std::size_t kFirstBeyondBasicPlane = 189000;
    constexpr std::size_t kBeyondBasicPlane = 0x100000;
    if (number >= kFirstBeyondBasicPlane && number - kFirstBeyondBasicPlane < kBeyondBasicPlane) {
        return {kLength, static_cast<char32_t>(0x10000 + number - kFirstBeyondBasicPlane)};
    }
    return {kLength, number < m_longer.size() ? m_longer[number] : kNoCharacter};
}

ZPKTextDecoder::Character ZPKTextDecoder::readBig5(std::string_view bytes) const {
    const auto column = [](unsigned int second) {
        return std::min(indexWithin(second, 0x40, 0x7E), indexWithin(second, 0xA1, 0xFE, 63));
    };
    return readTwoBytes(bytes, indexWithin(byteAt(bytes, 0), 0xA1, 0xF9), column, 157);
}
