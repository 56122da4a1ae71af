// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/SourceText.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace zpk_packager {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kBlock = 1024;

std::size_t charactersIn(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char each) {
        return (static_cast<unsigned char>(each) & 0xC0) != 0x80;
    }));
}

}  // namespace

SourceText::SourceText(std::string bytes) : m_bytes(std::move(bytes)), m_lineStarts{0}, m_blocks{0} {
    for (std::size_t at = 0; at < m_bytes.size(); ++at) {
        const bool isPair = m_bytes[at] == '\r' && at + 1 < m_bytes.size() && m_bytes[at + 1] == '\n';
        if ((m_bytes[at] == '\r' && !isPair) || m_bytes[at] == '\n') {
            m_lineStarts.push_back(at + 1);
        }
    }
    for (std::size_t at = kBlock; at <= m_bytes.size(); at += kBlock) {
        const std::string_view block = std::string_view(m_bytes).substr(at - kBlock, kBlock);
        m_blocks.push_back(m_blocks.back() + charactersIn(block));
    }
}

TextPlace SourceText::placeOf(std::size_t offset) const {
    const auto next = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset);
    const auto line = static_cast<std::size_t>(next - m_lineStarts.begin());
    const std::size_t before = charactersBefore(offset) - charactersBefore(m_lineStarts[line - 1]);
    const bool isMarked = line == 1 && offset > 0 && m_bytes.starts_with(kByteOrderMark);
    return {line, before + (isMarked ? 0 : 1)};
}

std::size_t SourceText::charactersBefore(std::size_t offset) const {
    const std::size_t block = std::min(offset / kBlock, m_blocks.size() - 1);
    return m_blocks[block] +
           charactersIn(std::string_view(m_bytes).substr(block * kBlock, offset - block * kBlock));
}

}  // namespace zpk_packager
