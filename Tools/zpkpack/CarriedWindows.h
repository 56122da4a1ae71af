// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zpk_packager {

/// What a package brings along for its windows: what the template carries, another set of parts in its
/// place, or nothing. The parts are a folder `Frameworks`; a set of the vendor's may hold a folder
/// `Licenses`, which then takes the place of what the template says about its own.
class CarriedWindows {
public:
    /// `frameworks` is the vendor's set, if there is one.
    CarriedWindows(std::string templatePath, const std::optional<std::string>& frameworks, bool isWanted);

    /// Whether the package shows windows.
    bool isWanted() const { return m_isWanted; }

    /// The vendor's set.
    const std::optional<std::string>& frameworks() const { return m_frameworks; }

    /// Refuses parts that a launcher would not start, or that lead out of their folder. Throws
    /// `PackagerFailure`.
    void check() const;

    /// What is not copied from the template, by its path in the bundle.
    std::vector<std::string> leftOut() const;

    /// Copies the vendor's set, if there is one, to a copy of the template. Throws `PackagerFailure`.
    void putInto(const std::string& bundle) const;

private:
    bool hasOwnLicenses() const;

    std::string m_template;
    std::optional<std::string> m_frameworks;
    bool m_isWanted;
};

}  // namespace zpk_packager
