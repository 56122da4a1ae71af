// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CLocaleDefine.h"

namespace varno_zpk {

const char* const CLocaleDefine::LANGUAGE_ENGLISH = "en";
const char* const CLocaleDefine::BASIC_LANGUAGE = "en";

}  // namespace varno_zpk
