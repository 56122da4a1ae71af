// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Failures that are findings.
class CheckFailure {
public:
    CheckFailure() = delete;

    /// A message without the path that it is told under anyway.
    static std::string reasonIn(const std::string& message, const std::string& path);

    /// Does it; the reason of a failure is a finding of `check` at `path`.
    static void report(FindingList& findings, const char* check, const std::string& path,
                       const std::function<void()>& action);
};

}  // namespace zpk_packager
