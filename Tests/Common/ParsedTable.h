// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace zpk_test {

/// Key and value.
using Entry = std::pair<std::string, std::string>;
using Entries = std::vector<Entry>;

/// What one parse gave, all of it.
struct ParsedTable {
    int result = 0;
    Entries entries;
    std::string standardOutput;
    std::string standardError;

    bool operator==(const ParsedTable& other) const = default;
};

std::ostream& operator<<(std::ostream& stream, const ParsedTable& table);

/// Parses the file with the streams captured.
ParsedTable parseFile(const std::string& path);

/// Parses `contents`, put into the file `path`.
ParsedTable parseContents(const std::string& path, const std::string& contents);

/// The line that reports a fault.
std::string faultLine(const std::string& path, int line, int byte, const std::string& message);

}  // namespace zpk_test
