// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CAutoFinalizeObject.h"

#include <cassert>

#include "Common/CBaseObjectUtil.h"
#include "Common/CPlusUtil.h"

namespace varno_zpk {

// Ready before any dynamic initialisation, so that a singleton may also be made from a static.
constinit std::vector<CBaseObject*> CAutoFinalizeObject::s_AutoFinalizeObjects;
bool CAutoFinalizeObject::s_AllObjectsFinalized = false;

CAutoFinalizeObject::CAutoFinalizeObject() {
    assert(!s_AllObjectsFinalized);
    s_AutoFinalizeObjects.push_back(this);
}

CAutoFinalizeObject::~CAutoFinalizeObject() {
    CBaseObjectUtil::RemoveObject(s_AutoFinalizeObjects, this);
}

void CAutoFinalizeObject::AutoFinalizeObjectFinalize() {}

void CAutoFinalizeObject::FinalizeAllObjects() {
    assert(!s_AllObjectsFinalized);
    s_AllObjectsFinalized = true;

    // The destructors edit the registered list, so both passes run over a snapshot.
    std::vector<CBaseObject*> objects(s_AutoFinalizeObjects);
    for (CBaseObject* object : objects) {
        try {
            DOWN_CAST(CAutoFinalizeObject*, object)->AutoFinalizeObjectFinalize();
        } catch (...) {
            // One finalizer that fails must not keep the others from running.
        }
    }
    CBaseObjectUtil::Destroy(objects);
}

}  // namespace varno_zpk
