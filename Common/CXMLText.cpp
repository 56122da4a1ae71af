// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLText.h"

namespace varno_zpk {

CXMLText::~CXMLText() = default;

void CXMLText::SetStringValue(const char* value) {
    m_value = value;
}

const char* CXMLText::GetStringValue() const {
    return m_value.c_str();
}

const std::string& CXMLText::GetStringValueString() const {
    return m_value;
}

CXMLNode* CXMLText::Clone() const {
    return CreateTextWithStringValue(m_value.c_str());
}

}  // namespace varno_zpk
