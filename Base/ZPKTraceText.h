// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// A text of a package within a line of a trace: whole up to a bound, else its beginning, never cut within a
/// character, and a mark behind it. It refers to the text that it was made of. May be called from any thread.
class ZPKTraceText {
public:
    /// As long as the longest path, so that each of these is seen whole.
    static constexpr std::size_t kLongest = 4096;

    explicit ZPKTraceText(std::string_view whole);

    std::string_view shown() const { return m_shown; }

    /// What stands behind the shown text: nothing where that is all of it.
    std::string_view mark() const { return m_mark; }

    /// Both.
    std::string text() const { return std::string(m_shown).append(m_mark); }

private:
    std::string_view m_shown;
    std::string_view m_mark;
};
