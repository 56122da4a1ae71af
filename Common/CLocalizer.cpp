// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CLocalizer.h"

#include "Common/CDefaultLocalizer.h"

namespace varno_zpk {

CLocalizer* CLocalizer::s_DefaultLocalizer = nullptr;

ILocalizer* CLocalizer::GetLocalizer() {
    if (s_DefaultLocalizer == nullptr) {
        s_DefaultLocalizer = CDefaultLocalizer::GetLocalizer();
    }
    return s_DefaultLocalizer;
}

CLocalizer::~CLocalizer() {
    if (s_DefaultLocalizer == this) {
        s_DefaultLocalizer = nullptr;
    }
}

}  // namespace varno_zpk
