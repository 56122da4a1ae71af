// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CVariableValueFinder.h"

namespace varno_zpk {

CVariableValueFinder* CVariableValueFinder::s_DefaultFinder = nullptr;

CVariableValueFinder::~CVariableValueFinder() {
    if (s_DefaultFinder == this) {
        s_DefaultFinder = nullptr;
    }
}

void CVariableValueFinder::SetDefaultFinder(CVariableValueFinder* finder) {
    s_DefaultFinder = finder;
}

}  // namespace varno_zpk
