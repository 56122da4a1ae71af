// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <stdexcept>
#include <string>

namespace zpk_archive {

/// One member cannot be packed or unpacked; the work goes on with the next one.
class MemberFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The archive itself cannot be read or written further.
class ArchiveFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The system's words for an errno value.
std::string systemReason(int error);

}  // namespace zpk_archive
