// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>

namespace zpk_packager {

/// The picture that a package source brings for its windows.
class PackageIcon {
public:
    explicit PackageIcon(std::string sourceFolder) : m_source(std::move(sourceFolder)) {}

    /// Gives it to the bundle that has `resourceFolder`, where the source has one. Throws `PackagerFailure`.
    void putInto(const std::string& resourceFolder) const;

private:
    std::string m_source;
};

}  // namespace zpk_packager
