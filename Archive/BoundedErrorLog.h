// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

#include "Archive/ErrorSink.h"

namespace zpk_archive {

/// Writes each error as one line, `ditto: NAME: reason`, and stops before 4000 bytes in all: a pipe
/// that nobody reads may hold no more than 4096, and filling it would block the tool for ever.
class BoundedErrorLog : public ErrorSink {
public:
    /// `descriptor` stays the caller's.
    explicit BoundedErrorLog(int descriptor) : m_descriptor(descriptor) {}
    /// Says how many lines were left out, if any.
    ~BoundedErrorLog() override;
    BoundedErrorLog(const BoundedErrorLog&) = delete;
    BoundedErrorLog& operator=(const BoundedErrorLog&) = delete;

    void error(const std::string& name, const std::string& reason) override;
    void warning(const std::string& name, const std::string& reason) override;

private:
    void write(const std::string& text);
    void writeLine(const std::string& line);

    int m_descriptor;
    std::size_t m_written = 0;
    std::size_t m_leftOut = 0;
};

}  // namespace zpk_archive
