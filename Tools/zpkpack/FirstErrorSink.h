// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

#include "Archive/Archive.h"

namespace zpk_packager {

/// Keeps the first error of the archive library, from which the rest usually follows, and counts them.
class FirstErrorSink : public zpk_archive::ErrorSink {
public:
    void error(const std::string& name, const std::string& reason) override {
        if (m_count == 0) {
            m_text = name + ": " + reason;
        }
        ++m_count;
    }
    void warning(const std::string&, const std::string&) override {}

    /// `NAME: reason`, and how many errors came after it; empty when there was none.
    std::string text() const {
        return m_count > 1 ? m_text + " (and " + std::to_string(m_count - 1) + " more)" : m_text;
    }

private:
    std::string m_text;
    std::size_t m_count = 0;
};

}  // namespace zpk_packager
