// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/FindingList.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <tuple>

#include "Base/ZPKTerminalText.h"
#include "Tools/zpkpack/Check/CheckRules.h"

namespace zpk_packager {

namespace {

constexpr const char* kUnusedAllowance = "allow-unused";
constexpr std::size_t kLongestText = 1000;

auto sortingKey(const Finding& finding) {
    return std::tie(finding.path, finding.place.line, finding.place.column, finding.text);
}

}  // namespace

void FindingList::add(const char* check, const std::string& path, const std::string& text, TextPlace place) {
    const CheckRule* const rule = CheckRules::find(check);
    assert(rule != nullptr);
    std::size_t& count = m_counts[rule];
    ++count;
    if (count <= kMostOfACheck) {
        m_findings.push_back({rule, path, place, ZPKTerminalText::printable(text, kLongestText)});
    } else if (count == kMostOfACheck + 1) {
        m_firstOmitted.emplace(rule,
                               Finding{rule, path, place, ZPKTerminalText::printable(text, kLongestText)});
    }
}

bool FindingList::keepsAnother(const char* check) const {
    const auto count = m_counts.find(CheckRules::find(check));
    return count == m_counts.end() || count->second <= kMostOfACheck;
}

void FindingList::allow(const std::string& check, const std::string& path, TextPlace place) {
    m_allowances.push_back({check, path, place});
}

std::size_t FindingList::warnings() const {
    return static_cast<std::size_t>(std::count_if(
        m_findings.begin(), m_findings.end(),
        [](const Finding& finding) { return finding.rule->severity == CheckSeverity::Warning; }));
}

void FindingList::finish() {
    leaveOutAllowed();
    reportOmitted();
    std::stable_sort(m_findings.begin(), m_findings.end(), [](const Finding& one, const Finding& other) {
        return sortingKey(one) < sortingKey(other);
    });
}

void FindingList::leaveOutAllowed() {
    std::set<const CheckRule*> allowed;
    for (const Allowance& allowance : m_allowances) {
        const CheckRule* const rule = CheckRules::find(allowance.check);
        if (rule == nullptr || m_counts.count(rule) == 0 || !allowed.insert(rule).second) {
            reportAllowance(allowance);
        }
    }
    std::erase_if(m_findings, [&](const Finding& finding) { return allowed.count(finding.rule) > 0; });
    std::erase_if(m_firstOmitted, [&](const auto& omitted) { return allowed.count(omitted.first) > 0; });
}

void FindingList::reportAllowance(const Allowance& allowance) {
    std::string text = "\"allow " + allowance.check + "\" silences nothing";
    if (CheckRules::find(allowance.check) == nullptr) {
        const std::string near = CheckRules::nearestName(allowance.check);
        text += ": there is no check of this name" + (near.empty() ? "" : "; \"" + near + "\" is near");
    }
    add(kUnusedAllowance, allowance.path, text, allowance.place);
}

void FindingList::reportOmitted() {
    for (auto& [rule, finding] : m_firstOmitted) {
        const std::size_t omitted = m_counts[rule] - kMostOfACheck;
        if (omitted > 1) {
            finding.text += " (and " + std::to_string(omitted - 1) + " more of this check)";
        }
        m_findings.push_back(finding);
    }
}

}  // namespace zpk_packager
