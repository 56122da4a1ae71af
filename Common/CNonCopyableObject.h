// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "Common/CBaseObject.h"
#include "Common/CNonCopyable.h"

namespace varno_zpk {

/// An object that is never copied.
class CNonCopyableObject : public CBaseObject, private CNonCopyable {};

}  // namespace varno_zpk
