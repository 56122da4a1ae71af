// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CBaseObjectUtil.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace varno_zpk {

void CBaseObjectUtil::Destroy(std::vector<CBaseObject*>& objects) {
    try {
        for (std::size_t index = objects.size(); index-- > 0;) {
            delete objects.at(index);
        }
    } catch (...) {
        assert(0);
    }
    objects.clear();
}

bool CBaseObjectUtil::RemoveObject(std::vector<CBaseObject*>& objects, CBaseObject* object) {
    const auto found = std::find(objects.begin(), objects.end(), object);
    if (found == objects.end()) {
        return false;
    }
    objects.erase(found);
    return true;
}

}  // namespace varno_zpk
