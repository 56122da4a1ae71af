// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Description/CElementReader.h"

#include "Common/CZPKError.h"
#include "Common/CZPKStatus.h"

namespace varno_zpk {

bool CElementReader::ReadAttribute(const CXMLElement& element, std::string_view name, std::string& outValue) {
    bool isFound = false;
    for (const CXMLNode* attribute : element.GetAttributes()) {
        if (attribute->GetKind() == XMLKIND_ATTRIBUTE && attribute->GetNameString() == name) {
            outValue = attribute->GetStringValueString();
            isFound = true;
        }
    }
    return isFound;
}

CXMLElement& CElementReader::Require(CXMLElement* element) {
    if (element == nullptr) {
        throw CZPKError(CZPKStatus::ERROR_UNDEFINED_BEHAVIOR_HAPPEND);
    }
    return *element;
}

}  // namespace varno_zpk
