// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cerrno>
#include <stdexcept>

#include "Base/ZPKFailure.h"

namespace zpk_archive {

/// One member cannot be packed or unpacked; the work goes on with the next one.
class MemberFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    /// In the system's words for an errno value.
    static MemberFailure ofSystem(int error) { return MemberFailure(ZPKFailure::systemReason(error)); }
};

/// The archive itself cannot be read or written further.
class ArchiveFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    static ArchiveFailure ofSystem(int error) { return ArchiveFailure(ZPKFailure::systemReason(error)); }
};

/// Nothing more can be written: the volume, or the person's share of it, is full.
class VolumeFullFailure : public ArchiveFailure {
public:
    using ArchiveFailure::ArchiveFailure;
};

/// The volume is full, and somebody was told so already with the member that could not be written.
class WritingEnded : public std::runtime_error {
public:
    WritingEnded() : std::runtime_error("nothing more can be written") {}
};

/// For an errno value of a call that makes or writes a member's thing.
[[noreturn]] inline void throwWriteFailure(int error) {
    if (error == ENOSPC || error == EDQUOT) {
        throw VolumeFullFailure(ZPKFailure::systemReason(error));
    }
    throw MemberFailure::ofSystem(error);
}

}  // namespace zpk_archive
