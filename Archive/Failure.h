// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

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

}  // namespace zpk_archive
