// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <optional>
#include <string>

#include "Archive/FileIdentity.h"
#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFileDescriptor.h"

struct stat;

namespace zpk_archive {

/// Calls of the system on a name in an open folder, none of which follows a symbolic link. A call that a
/// signal interrupts is repeated. Where no other way is told, a failure leaves its cause in errno.
class DiskCalls {
public:
    DiskCalls() = delete;

    /// True when the call gives 0.
    template <typename Call>
    static bool succeeds(Call call) {
        return ZPKDescriptorIO::retry(call) == 0;
    }

    static ZPKFileDescriptor open(int parent, const char* name, int flags, mode_t mode = 0);
    static bool remove(int parent, const char* name, int flags);
    static bool status(int parent, const char* name, struct stat& status);
    static bool status(int descriptor, struct stat& status);
    /// What the name means now; nothing where that cannot be told.
    static std::optional<FileIdentity> identity(int parent, const char* name);

    /// Makes a folder that is open to its owner, whatever the process's mask.
    static bool makeFolder(int parent, const char* name, mode_t mode);
    /// The same for a folder and those on the way to it that are missing.
    static bool makeMissingFolders(const std::string& path);
    /// Makes sure that the owner may enter the folder and write in it.
    static bool isOpenToOwner(int parent, const char* name, const struct stat& status);
    /// Opens a folder to be worked in. Throws MemberFailure.
    static ZPKFileDescriptor openFolder(int parent, const char* name, bool makeMissing);

    /// Starts reading a folder's names through a descriptor, which it takes over; null on failure.
    static DIR* startListing(ZPKFileDescriptor& folder);
    /// The next name; null at the end, with errno 0, and on failure.
    static const dirent* nextIn(DIR* folder);

    /// Frees the name for something new: a file, a link or an empty folder goes. Throws MemberFailure.
    static void clearPlace(int parent, const char* name);

    /// Throws MemberFailure or VolumeFullFailure for the cause in errno.
    static void throwUnless(bool isGood);
};

}  // namespace zpk_archive
