// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CLocalizerUtil.h"

#include "Common/CLocalizer.h"

namespace varno_zpk {

std::string& CLocalizerUtil::Localize(const ILocalizer* inLocalizer, std::string& ioText) {
    const char* text = inLocalizer->Localize(ioText.c_str());
    if (text != ioText.c_str()) {
        ioText = text;
    }
    return ioText;
}

std::string localized(const char* inKey) {
    return CLocalizer::GetLocalizer()->Localize(inKey);
}

}  // namespace varno_zpk
