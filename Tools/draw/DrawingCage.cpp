// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/draw/DrawingCage.h"

#include <sys/prctl.h>

#include "Base/ZPKInstruments.h"
#include "Base/ZPKResourceLimit.h"

namespace {

/// Hundreds of times what an icon takes.
constexpr rlim_t kSeconds = 5;
constexpr rlim_t kMemory = rlim_t{256} << 20;
constexpr rlim_t kLargestFile = rlim_t{4} << 20;

}  // namespace

void DrawingCage::enter() {
    if (ZPKInstruments::areThere()) {
        return;
    }
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ZPKResourceLimit::lower(RLIMIT_NOFILE, 0);
    ZPKResourceLimit::lower(RLIMIT_CPU, kSeconds);
    ZPKResourceLimit::lower(RLIMIT_DATA, kMemory);
    ZPKResourceLimit::lower(RLIMIT_FSIZE, kLargestFile);
    ZPKResourceLimit::lower(RLIMIT_CORE, 0);
}
