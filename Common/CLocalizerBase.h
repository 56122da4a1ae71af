// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Common/ILocalizer.h"

namespace varno_zpk {

/// A localizer whose default language is the current language of the resource bundles.
class CLocalizerBase : public ILocalizer {
public:
    const char* GetDefaultLocalizeLanguage() const override;
};

}  // namespace varno_zpk
