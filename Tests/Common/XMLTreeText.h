// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace zpk_test {

/// A tree in one line, every node apart: `a(id='1' x='2')[b[] 'text' 'more']`.
inline std::string treeText(const varno_zpk::CXMLElement& element) {
    std::string out = element.GetNameString();
    std::string separator;
    if (!element.GetAttributes().empty()) {
        out += "(";
        for (const varno_zpk::CXMLNode* attribute : element.GetAttributes()) {
            out += separator + attribute->GetNameString() + "='" + attribute->GetStringValueString() + "'";
            separator = " ";
        }
        out += ")";
    }
    out += "[";
    separator.clear();
    for (const varno_zpk::CXMLNode* child : element.GetChildren()) {
        out += separator;
        out += child->GetKind() == varno_zpk::XMLKIND_ELEMENT
                   ? treeText(static_cast<const varno_zpk::CXMLElement&>(*child))
                   : "'" + child->GetStringValueString() + "'";
        separator = " ";
    }
    return out + "]";
}

}  // namespace zpk_test
