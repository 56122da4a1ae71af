// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/Failure.h"

#include <system_error>

namespace zpk_archive {

std::string systemReason(int error) {
    return std::generic_category().message(error);
}

}  // namespace zpk_archive
