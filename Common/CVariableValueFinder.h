// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Common/IVariableValueFinder.h"

namespace varno_zpk {

/// Base of the finders. Keeps the default finder, the one used when a caller names none, which is
/// not owned and takes itself back when it is destroyed. Main thread only, unguarded.
class CVariableValueFinder : public IVariableValueFinder {
public:
    ~CVariableValueFinder() override;

    /// Makes `finder` the default one, in place of any other; null leaves none.
    static void SetDefaultFinder(CVariableValueFinder* finder);

    /// Null when no finder was registered, or when the last one registered is gone.
    static CVariableValueFinder* GetDefaultFinder() { return s_DefaultFinder; }

private:
    static CVariableValueFinder* s_DefaultFinder;
};

}  // namespace varno_zpk
