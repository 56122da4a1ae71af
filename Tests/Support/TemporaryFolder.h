// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

namespace zpk_test {

/// A fresh private folder for one test, removed at its end; kept, and its path printed, when the
/// test has failed.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return m_path; }

    /// `path()/relative`.
    std::string operator/(const std::string& relative) const { return m_path + "/" + relative; }

private:
    std::string m_path;
};

/// Writes `contents` to `path`, making the parent folders; fails the test when it cannot.
void writeFile(const std::string& path, std::string_view contents);

/// The bytes of the file; fails the test when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace zpk_test
