// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKSoftwareListText.h"

namespace {

std::string indentedLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += text.empty() ? "  " : "\n  ";
        text += line;
    }
    return text;
}

}  // namespace

std::string ZPKSoftwareListText(const std::string& format, const std::vector<std::string>& softwares) {
    std::string text;
    bool inserted = false;
    for (std::size_t at = 0; at < format.size(); ++at) {
        const std::string pair = format.substr(at, 2);
        if (pair == "%s" && !inserted) {
            text += indentedLines(softwares);
            inserted = true;
            ++at;
        } else if (pair == "%%") {
            text += '%';
            ++at;
        } else {
            text += format[at];
        }
    }
    return text;
}
