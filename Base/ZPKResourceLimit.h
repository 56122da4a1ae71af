// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/resource.h>

#include <algorithm>

/// What a process may take of the machine. May be called from any thread, and counts for all of them.
class ZPKResourceLimit {
public:
    ZPKResourceLimit() = delete;

    /// Lowers a limit (RLIMIT_...) for good; one that is lower already stays.
    template <typename Resource>
    static void lower(Resource resource, rlim_t value) {
        rlimit limit{};
        if (::getrlimit(resource, &limit) == 0) {
            limit.rlim_cur = std::min(limit.rlim_cur, value);
            limit.rlim_max = std::min(limit.rlim_max, value);
            ::setrlimit(resource, &limit);
        }
    }
};
