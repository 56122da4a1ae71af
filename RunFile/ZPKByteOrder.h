// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Puts numbers (least significant byte first) and texts one after the other.
class ZPKByteWriter {
public:
    template <typename Number>
    void number(Number value) {
        for (std::size_t index = 0; index < sizeof(Number); ++index) {
            m_bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * index) & 0xFF);
        }
    }

    /// Its length in 32 bits, then its bytes.
    void text(std::string_view text) {
        number(static_cast<std::uint32_t>(text.size()));
        m_bytes += text;
    }

    const std::string& bytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

/// Takes them back. Once bytes are missing everything is 0 or empty and `isGood` says no, so that a
/// caller asks once, at the end.
class ZPKByteReader {
public:
    /// `bytes` outlives the reader.
    explicit ZPKByteReader(std::string_view bytes) : m_bytes(bytes) {}

    template <typename Number>
    Number number() {
        std::uint64_t value = 0;
        const std::string_view bytes = take(sizeof(Number));
        for (std::size_t index = 0; index < bytes.size(); ++index) {
            value |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[index])) << (8 * index);
        }
        return static_cast<Number>(value);
    }

    std::string text() { return std::string(take(number<std::uint32_t>())); }

    void fail() { m_isGood = false; }
    bool isGood() const { return m_isGood; }
    bool isAtEnd() const { return m_bytes.empty(); }

private:
    std::string_view take(std::size_t size) {
        m_isGood = m_isGood && size <= m_bytes.size();
        if (!m_isGood) {
            return {};
        }
        const std::string_view taken = m_bytes.substr(0, size);
        m_bytes.remove_prefix(size);
        return taken;
    }

    std::string_view m_bytes;
    bool m_isGood = true;
};
