// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Tools/zpkpack/Check/Finding.h"

namespace zpk_packager {

/// The bytes of a text file that is checked, and the lines in it: LF, CR and CR LF each end one.
class SourceText {
public:
    /// Bytes. What is larger is not checked: no description or table comes near it.
    static constexpr std::size_t kLargestFile = std::size_t{1} << 20;

    explicit SourceText(std::string bytes);

    const std::string& bytes() const { return m_bytes; }

    /// Of the byte at `offset`. Bytes that continue a character are not counted, nor is a byte order mark.
    TextPlace placeOf(std::size_t offset) const;

private:
    std::size_t charactersBefore(std::size_t offset) const;

    std::string m_bytes;
    std::vector<std::size_t> m_lineStarts;
    /// How many characters are before each block: a line may be long, and asked for often.
    std::vector<std::size_t> m_blocks;
};

}  // namespace zpk_packager
