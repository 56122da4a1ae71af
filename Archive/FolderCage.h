// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

namespace zpk_archive {

/// Leaves a process one folder, by the kernel's Landlock: whatever path it opens, makes, links or removes
/// then, one outside that folder is refused. What is open already stays open.
class FolderCage {
public:
    FolderCage() = delete;

    /// For the calling thread and all that it starts, for good. `folder` stays the caller's. False, and
    /// nothing is changed, where the kernel does not offer it: it is too old (before 5.19, where a link
    /// between two folders could not be allowed), built or started without it, or a sandbox around the
    /// process refuses.
    [[nodiscard]] static bool enter(int folder);
};

}  // namespace zpk_archive
