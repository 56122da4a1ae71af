// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKParentProcess.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

bool ZPKParentProcess::endWithIt() {
    const char* const parent = std::getenv(kVariable);
    return parent == nullptr ||
           (::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && std::to_string(::getppid()) == parent);
}
