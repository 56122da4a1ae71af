// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

struct ZPKNamedEncoding;

/// The characters of an encoding, in the order of their codes. Each is kept as its distance from the one
/// before, the lower halves of all distances before the upper ones: so they take the least room in a
/// compressed file.
struct ZPKEncodingTable {
    /// A code that stands for no character.
    static constexpr char16_t kNoCharacter = 0;

    const unsigned char* distances;
    std::size_t size;

    /// One entry a code.
    std::vector<char16_t> characters() const;

    /// Every encoding by each of its names, made by script/make-encoding-tables.
    static const std::span<const ZPKNamedEncoding> kEncodings;
};

/// How bytes make a code.
enum class ZPKEncodingForm { OneByte, ShiftJIS, EUCJP, EUCKR, UnifiedHangul, GB18030, Big5 };

struct ZPKNamedEncoding {
    /// Small letters and digits alone.
    std::string_view name;
    ZPKEncodingForm form;
    const ZPKEncodingTable* first;
    /// With EUC-JP its codes of three bytes; with Shift_JIS what takes the place of the first table's; or
    /// null.
    const ZPKEncodingTable* second;
};
