// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CResourceBundleStringElement.h"

#include "Common/CStringUtil.h"

namespace varno_zpk {

CResourceBundleStringElement::CResourceBundleStringElement(const char* inKey, const char* inValue) {
    CStringUtil::SetUTF8StringToUstring(inKey, m_key);
    CStringUtil::SetUTF8StringToUstring(inValue, m_value);
}

}  // namespace varno_zpk
