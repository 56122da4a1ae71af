// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/DescriptionText.h"
#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Looks at `Info/Condition.xml`: whether it can be met, and how discs and products are named.
class ConditionCheck {
public:
    explicit ConditionCheck(FindingList& findings) : m_findings(findings) {}

    /// `folder` holds `Info`.
    void run(const std::string& folder);

private:
    using Element = varno_zpk::CXMLElement;

    void checkRoot(DescriptionText& text);
    void checkConditions(DescriptionText& text, const Element& conditions);
    void checkTargets(DescriptionText& text, const Element& targets);
    void checkDisc(DescriptionText& text, const Element& disc);
    void checkDoubled(DescriptionText& text, const Element* before, const Element& element);

    FindingList& m_findings;
};

}  // namespace zpk_packager
