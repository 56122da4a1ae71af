// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "Common/CBaseObject.h"

namespace varno_zpk {

/// What owners of object vectors share.
class CBaseObjectUtil {
public:
    CBaseObjectUtil() = delete;

    /// Deletes every element that is not null, last first, then empties the vector (its capacity is
    /// kept). A destructor that throws stops the program.
    static void Destroy(std::vector<CBaseObject*>& objects);

    /// Takes the first element equal to `object` out of the vector, keeping the order of the rest,
    /// and never deletes it. False when it was not there.
    static bool RemoveObject(std::vector<CBaseObject*>& objects, CBaseObject* object);
};

}  // namespace varno_zpk
