// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <initializer_list>
#include <string_view>

/// Lines of the launcher for whoever looks for the cause of something. They go through the C library's
/// stream, as every other line does: the C++ library's would weigh as much as a third of the launcher.
class ZPKDiagnostic {
public:
    ZPKDiagnostic() = delete;

    /// Writes the parts as one line to standard error, after the program's name. Failures do not count. May
    /// be called from any thread.
    static void tell(std::initializer_list<std::string_view> parts);
};
