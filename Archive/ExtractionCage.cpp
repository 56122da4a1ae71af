// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/ExtractionCage.h"

#include <pthread.h>
#include <sys/prctl.h>

#include "Archive/CallFilter.h"
#include "Archive/FolderCage.h"
#include "Base/ZPKInstruments.h"
#include "Base/ZPKResourceLimit.h"

namespace zpk_archive {

namespace {

/// Many times what unpacking takes; a thread's stack counts in full.
constexpr rlim_t kMemoryLimit = rlim_t{512} << 20;
constexpr std::size_t kThreadStack = std::size_t{1} << 20;

/// Each level of a tree takes one.
constexpr rlim_t kDescriptorLimit = 16384;

void lowerLimits() {
    ZPKResourceLimit::lower(RLIMIT_DATA, kMemoryLimit);
    ZPKResourceLimit::lower(RLIMIT_NOFILE, kDescriptorLimit);
    ZPKResourceLimit::lower(RLIMIT_CORE, 0);
    // Threads otherwise take as much as the person allows the first one.
    pthread_attr_t attributes;
    if (::pthread_attr_init(&attributes) == 0) {
        ::pthread_attr_setstacksize(&attributes, kThreadStack);
        ::pthread_setattr_default_np(&attributes);
        ::pthread_attr_destroy(&attributes);
    }
}

}  // namespace

ExtractionCage::Walls ExtractionCage::enter(int folder) {
    Walls walls;
    if (ZPKInstruments::areThere() || ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        return walls;
    }
    lowerLimits();
    walls.folder = FolderCage::enter(folder);
    walls.calls = CallFilter::enter();
    return walls;
}

}  // namespace zpk_archive
