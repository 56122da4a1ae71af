// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/CheckFailure.h"

#include <exception>

namespace zpk_packager {

std::string CheckFailure::reasonIn(const std::string& message, const std::string& path) {
    return message.starts_with(path + ": ") ? message.substr(path.size() + 2) : message;
}

void CheckFailure::report(FindingList& findings, const char* check, const std::string& path,
                          const std::function<void()>& action) {
    try {
        action();
    } catch (const std::exception& failure) {
        findings.add(check, path, reasonIn(failure.what(), path));
    }
}

}  // namespace zpk_packager
