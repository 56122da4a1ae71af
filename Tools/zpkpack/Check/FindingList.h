// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "Tools/zpkpack/Check/Finding.h"

namespace zpk_packager {

/// What the checks of one package have found.
class FindingList {
public:
    /// Of one check; what comes after is counted only, so that a package of a million faults does not fill
    /// the memory.
    static constexpr std::size_t kMostOfACheck = 1000;

    /// `check` is a name of `CheckRules`. The text may hold any bytes of the package; it is kept as a
    /// terminal may show it, cut where it is very long.
    void add(const char* check, const std::string& path, const std::string& text, TextPlace place = {});

    /// Whether another finding of this check would be kept, so that its text is worth making.
    bool keepsAnother(const char* check) const;

    /// Silences a check for the whole package; `path` and `place` say where that was asked for.
    void allow(const std::string& check, const std::string& path, TextPlace place);

    /// To be called once, when all checks have run: leaves out what is allowed, reports what was allowed in
    /// vain, and sorts by path and place.
    void finish();

    const std::vector<Finding>& findings() const { return m_findings; }

    /// How many findings are errors, or are warnings.
    std::size_t errors() const { return m_findings.size() - warnings(); }
    std::size_t warnings() const;

private:
    struct Allowance {
        std::string check;
        std::string path;
        TextPlace place;
    };

    void reportOmitted();
    void leaveOutAllowed();
    void reportAllowance(const Allowance& allowance);

    std::vector<Finding> m_findings;
    std::vector<Allowance> m_allowances;
    std::map<const CheckRule*, std::size_t> m_counts;
    std::map<const CheckRule*, Finding> m_firstOmitted;
};

}  // namespace zpk_packager
