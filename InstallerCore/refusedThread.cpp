// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// What comes of a thread that the system refuses. The toolkit goes on without it, and waits for it for ever:
// for events that nobody reads, for answers that nobody gives. So every library of the process starts its
// threads through this.

#include <dlfcn.h>
#include <pthread.h>

#include <cstdlib>

#include "Base/ZPKDiagnostic.h"
#include "Base/ZPKFailure.h"
#include "InstallerCore/ZPKCrashRescue.h"

namespace {

using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

/// While the toolkit is opened, the run can still go on on the terminal. Later it ends with all that it has
/// made, and without the toolkit, which would wait for its thread before it lets itself be taken apart.
void endWithoutThread(int error) {
    const std::string reason = ZPKFailure::systemReason(error);
    ZPKCrashRescue::giveUp(reason);
    ZPKDiagnostic::tell({"no thread: ", reason});
    std::quick_exit(EXIT_FAILURE);
}

}  // namespace

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) {
    static const auto kCreate = reinterpret_cast<Create>(::dlsym(RTLD_NEXT, "pthread_create"));
    const int error = kCreate(thread, attributes, start, argument);
    if (error != 0) {
        endWithoutThread(error);
    }
    return error;
}
