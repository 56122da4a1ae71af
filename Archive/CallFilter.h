// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

namespace zpk_archive {

/// Leaves a process the system calls that unpacking takes, and no others: no program, no other process, no
/// network, no mount, no look into another process, no memory that can be executed. What is refused fails
/// with EPERM.
class CallFilter {
public:
    CallFilter() = delete;

    /// For the calling thread and all that it starts, for good. Wants `no_new_privs` set. False, and nothing
    /// is changed, where the kernel or this processor has no such filter.
    [[nodiscard]] static bool enter();
};

}  // namespace zpk_archive
