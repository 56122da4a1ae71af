// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CLocalizerBase.h"

#include "Common/CResourceBundle.h"

namespace varno_zpk {

const char* CLocalizerBase::GetDefaultLocalizeLanguage() const {
    return CResourceBundle::GetCurrentLanguage();
}

}  // namespace varno_zpk
