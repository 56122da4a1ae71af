// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"

namespace zpk_run {

/// The private folder that one start of a run file places its bundle in. While it is in use a lock is
/// held on it, so that a folder whose processes were all killed is told from one in use, and the next
/// start of any run file removes it. One thread uses one.
class RunFolder {
public:
    /// Makes a folder of this user's alone in `temporaryFolder` and locks it.
    static ZPKResult<RunFolder> makeIn(const std::string& temporaryFolder);

    /// Removes the folders in `temporaryFolder` that earlier starts left behind. What cannot be removed
    /// stays: nobody is to be told.
    static void removeAbandoned(const std::string& temporaryFolder);

    const std::string& path() const { return m_path; }

    /// The descriptor that holds the lock. Every process that inherits it holds the lock too.
    int lock() const { return m_lock.get(); }

    /// Removes the folder with everything in it.
    ZPKOutcome remove() const;

private:
    RunFolder(std::string path, ZPKFileDescriptor lock) : m_path(std::move(path)), m_lock(std::move(lock)) {}

    std::string m_path;
    ZPKFileDescriptor m_lock;
};

}  // namespace zpk_run
