// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/CommandTable.h"

namespace zpk_packager {

/// The manual pages of the packager, in the macros of man(7).
class ManualPages {
public:
    /// `version` and `date` (YYYY-MM-DD) stand at the foot of each page.
    ManualPages(const CommandTable& table, std::string version, std::string date);

    /// zpkpack(1).
    std::string program() const;

    /// zpkpack-NAME(1).
    std::string command(const CommandTable::Command& command) const;

private:
    std::string head(const std::string& name, const std::string& help) const;

    const CommandTable& m_table;
    std::string m_version;
    std::string m_date;
};

}  // namespace zpk_packager
