// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/TableComments.h"

#include <string_view>
#include <vector>

namespace zpk_packager {

namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

/// The lines before line `line`.
std::vector<std::string_view> linesBefore(std::string_view bytes, std::size_t line) {
    std::vector<std::string_view> lines;
    while (lines.size() + 1 < line && !bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        lines.push_back(trimmed(bytes.substr(0, end)));
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    }
    return lines;
}

std::string_view withoutMarks(std::string_view line) {
    if (line.starts_with("//") || line.starts_with("/*")) {
        line.remove_prefix(2);
    }
    if (line.ends_with("*/")) {
        line.remove_suffix(2);
    }
    return trimmed(line);
}

}  // namespace

std::string TableComments::above(const std::string& bytes, std::size_t line) {
    const std::vector<std::string_view> lines = linesBefore(bytes, line);
    std::size_t first = lines.size();
    bool isInBlock = false;
    while (first > 0) {
        const std::string_view candidate = lines[first - 1];
        isInBlock = isInBlock || candidate.ends_with("*/");
        if (!isInBlock && !candidate.starts_with("//")) {
            break;
        }
        isInBlock = isInBlock && !candidate.starts_with("/*");
        --first;
    }
    std::string comments;
    for (; first < lines.size(); ++first) {
        const std::string_view text = withoutMarks(lines[first]);
        if (!text.empty()) {
            comments += (comments.empty() ? "" : "\n") + std::string(text);
        }
    }
    return comments;
}

}  // namespace zpk_packager
