// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

namespace zpk_packager {

/// Text between double quotes, as string tables, `Package.strings` and PO files take it.
class QuotedText {
public:
    QuotedText() = delete;

    /// The quotation mark, the backslash, the line feed and the tab are escaped; other bytes stay.
    static std::string of(std::string_view text);
};

}  // namespace zpk_packager
