// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Common/CAutoFinalizeObject.h"
#include "Common/CLocalizer.h"

namespace varno_zpk {

/// Localizes from the default resource bundles and expands the variables in what it finds.
class CDefaultLocalizer : public CAutoFinalizeObject, public CLocalizer {
public:
    /// A new localizer each time, destroyed with the other singletons.
    static CLocalizer* GetLocalizer();

    ~CDefaultLocalizer() noexcept override = default;

    const char* Localize(const char* inKey) const override;
    const char* Localize(const char* inKey, const char* inLanguage) override;

    /// Not supported: the two operations stop the program.
    unsigned long GetLocalizeLanguageCount() const override;
    const char* GetLocalizeLanguageAt(unsigned long inIndex) const override;

private:
    CDefaultLocalizer() = default;
};

}  // namespace varno_zpk
