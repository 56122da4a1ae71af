// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace zpk_archive {

/// Takes what went wrong, one call for each thing. Called from the thread that called the operation.
class ErrorSink {
public:
    virtual ~ErrorSink() = default;

    /// `name` is the member's name or the file's path, as raw bytes; `reason` is a phrase in English,
    /// where the system refused something the system's own.
    virtual void error(const std::string& name, const std::string& reason) = 0;

    /// Nothing was lost, but somebody should know.
    virtual void warning(const std::string& name, const std::string& reason) = 0;
};

}  // namespace zpk_archive
