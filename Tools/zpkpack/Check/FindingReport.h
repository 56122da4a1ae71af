// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// The forms in which findings are given out. Each is plain text that a terminal obeys nothing in, ending in
/// a line feed unless it is empty.
class FindingReport {
public:
    FindingReport() = delete;

    /// `path:line:column: error|warning: text [check]`, without a line feed.
    static std::string line(const Finding& finding);

    /// A line for each finding.
    static std::string asText(const FindingList& findings);

    /// An object with the array `findings` (`path`, `line`, `column`, `severity`, `text`, `check`) and the
    /// numbers `errors` and `warnings`.
    static std::string asJSON(const FindingList& findings);

    /// SARIF 2.1.0, one run. `version` is the packager's.
    static std::string asSARIF(const FindingList& findings, const std::string& version);
};

}  // namespace zpk_packager
