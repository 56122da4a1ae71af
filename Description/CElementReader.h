// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

#include "Common/CXMLElement.h"

namespace varno_zpk {

/// What the description classes share in reading their elements.
class CElementReader {
public:
    CElementReader() = delete;

    /// Assigns the value of the attribute `name` (of the last one, should there be several) and
    /// gives true; false when there is none.
    static bool ReadAttribute(const CXMLElement& element, std::string_view name, std::string& outValue);

    /// The element itself; a null one raises `CZPKStatus::ERROR_UNDEFINED_BEHAVIOR_HAPPEND`.
    static CXMLElement& Require(CXMLElement* element);

    /// Calls `action` with each direct child element, in order.
    template <typename Action>
    static void ForEachChildElement(const CXMLElement& element, Action action) {
        for (CXMLNode* child : element.GetChildren()) {
            if (child->GetKind() == XMLKIND_ELEMENT) {
                action(static_cast<CXMLElement*>(child));
            }
        }
    }
};

}  // namespace varno_zpk
