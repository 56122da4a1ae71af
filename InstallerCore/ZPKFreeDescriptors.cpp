// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKFreeDescriptors.h"

#include <fcntl.h>

#include <cerrno>
#include <vector>

#include "Base/ZPKFileDescriptor.h"

bool ZPKFreeDescriptors::areThere(std::size_t count) {
    std::vector<ZPKFileDescriptor> taken;
    while (taken.size() < count) {
        taken.emplace_back(::open("/", O_PATH | O_CLOEXEC));
        if (!taken.back().isOpen()) {
            const int error = errno;
            taken.clear();
            errno = error;
            return false;
        }
    }
    return true;
}
