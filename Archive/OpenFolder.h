// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>

#include "Archive/FileIdentity.h"
#include "Base/ZPKFileDescriptor.h"

namespace zpk_archive {

/// What a written thing shall have beside its contents.
struct ModeAndTime {
    mode_t permissions = 0;
    timespec modified{};
};

/// A folder that things are made in. Several threads may work in one.
class OpenFolder {
public:
    /// Throws MemberFailure when the system does not tell which folder it is.
    explicit OpenFolder(ZPKFileDescriptor descriptor);

    int descriptor() const { return m_descriptor.get(); }
    const FileIdentity& identity() const { return m_identity; }

    /// Gives a file that was made here with these permissions its time, and the permissions where the
    /// process's mask or the folder's access list has taken some away. Throws MemberFailure, or
    /// VolumeFullFailure.
    void giveModeAndTime(int file, const ModeAndTime& modeAndTime);

    /// The same for a file or folder that was made with others.
    static void setModeAndTime(int thing, const ModeAndTime& modeAndTime);

private:
    bool hasExactly(int file, mode_t permissions);

    ZPKFileDescriptor m_descriptor;
    FileIdentity m_identity;
    std::atomic<std::uint32_t> m_exactModes =
        0;  ///< The last two that files were made with as they were wanted.
};

}  // namespace zpk_archive
