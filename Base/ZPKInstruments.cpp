// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKInstruments.h"

bool ZPKInstruments::areThere() {
#ifdef ZPK_INSTRUMENTED
    return true;
#else
    return false;
#endif
}
