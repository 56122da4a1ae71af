// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLAttribute.h"

namespace varno_zpk {

CXMLAttribute::~CXMLAttribute() = default;

void CXMLAttribute::SetName(const char* name) {
    m_name = name;
}

const char* CXMLAttribute::GetName() const {
    return m_name.c_str();
}

const std::string& CXMLAttribute::GetNameString() const {
    return m_name;
}

void CXMLAttribute::SetStringValue(const char* value) {
    m_value = value;
}

const char* CXMLAttribute::GetStringValue() const {
    return m_value.c_str();
}

const std::string& CXMLAttribute::GetStringValueString() const {
    return m_value;
}

CXMLNode* CXMLAttribute::Clone() const {
    return CreateAttributeWithNameWithStringValue(m_name.c_str(), m_value.c_str());
}

}  // namespace varno_zpk
