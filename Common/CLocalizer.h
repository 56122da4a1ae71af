// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Common/CLocalizerBase.h"

namespace varno_zpk {

/// Where callers get the process-wide localizer.
class CLocalizer : public CLocalizerBase {
public:
    /// The default localizer, made on first use; not the caller's to destroy.
    static ILocalizer* GetLocalizer();

    /// The default localizer may go: the next `GetLocalizer` makes another.
    ~CLocalizer() override;

private:
    /// Not owned: the object finalizes itself.
    static CLocalizer* s_DefaultLocalizer;
};

}  // namespace varno_zpk
