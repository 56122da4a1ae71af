// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "Common/CNonCopyableObject.h"

namespace varno_zpk {

/// Base of the process-wide singletons. Each instance registers itself, so that a host that wants
/// an orderly shutdown can finalize and destroy them all. Main thread only, unguarded.
class CAutoFinalizeObject : public CNonCopyableObject {
public:
    /// Asserts that the singletons have not been finalized yet.
    CAutoFinalizeObject();
    ~CAutoFinalizeObject() override;

    /// Releases what the object holds, before any singleton is destroyed; the other singletons may
    /// still be used here. What it throws is discarded.
    virtual void AutoFinalizeObjectFinalize();

    /// Finalizes every registered object, first registered first, then destroys them, last
    /// registered first. A second call is a programming error; so is making a singleton afterwards.
    static void FinalizeAllObjects();

private:
    friend class AutoFinalizeObjectTest;  // looks at the list

    static std::vector<CBaseObject*> s_AutoFinalizeObjects;
    static bool s_AllObjectsFinalized;
};

}  // namespace varno_zpk
