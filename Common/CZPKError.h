// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <stdexcept>
#include <string>

#include "Common/CZPKStatus.h"

namespace varno_zpk {

/// The exception of the core classes. It refers to the status that it reports, normally one of the
/// constants, which therefore never dangles; `what()` is always empty.
class CZPKError : public std::runtime_error {
public:
    /// Reports `CZPKStatus::ERROR_UNDEFINED_BEHAVIOR_HAPPEND`.
    CZPKError();

    /// `status` is referred to, not copied, and must outlive the error and its copies.
    explicit CZPKError(const CZPKStatus& status);

    /// A copy of the status's message.
    std::string GetStatus() const;

private:
    const CZPKStatus& m_status;
};

}  // namespace varno_zpk
