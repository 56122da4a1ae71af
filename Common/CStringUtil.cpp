// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CStringUtil.h"

namespace varno_zpk {

void CStringUtil::SetUTF8StringToUstring(const char* str, std::string& out) {
    out.assign(str);
}

}  // namespace varno_zpk
