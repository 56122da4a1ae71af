// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <stdexcept>
#include <string>

#include "Base/ZPKFailure.h"

namespace zpk_packager {

/// Why no package was made, in one line for the vendor. The text may hold any bytes of a path; who
/// shows it makes it harmless.
class PackagerFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    PackagerFailure(const std::string& path, const std::string& reason)
        : std::runtime_error(path + ": " + reason) {}
    explicit PackagerFailure(const ZPKFailure& failure) : PackagerFailure(failure.path(), failure.reason()) {}

    /// The reason is the system's own text for `error`, an errno value.
    static PackagerFailure ofSystem(const std::string& path, int error) {
        return PackagerFailure(path, ZPKFailure::systemReason(error));
    }
};

/// Throws the failure, if there is one.
inline void require(const ZPKOutcome& outcome) {
    if (!outcome) {
        throw PackagerFailure(outcome.failure());
    }
}

}  // namespace zpk_packager
