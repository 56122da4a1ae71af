// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>

namespace zpk_packager {

/// The folder that a vendor makes a package of.
class PackageSource {
public:
    explicit PackageSource(std::string folder) : m_folder(std::move(folder)) {}

    /// Refuses a source that lacks a piece, or whose descriptions the launcher would pass over in
    /// silence on the user's machine. Throws `PackagerFailure`.
    void check() const;

    const std::string& folder() const { return m_folder; }

    /// Whether the package brings its own texts.
    bool hasLanguages() const;
    std::string languageFolder() const;

private:
    void requireFolder(const std::string& path, const std::string& purpose) const;
    void checkDescriptions() const;

    std::string m_folder;
};

}  // namespace zpk_packager
