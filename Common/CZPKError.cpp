// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CZPKError.h"

namespace varno_zpk {

CZPKError::CZPKError() : CZPKError(CZPKStatus::ERROR_UNDEFINED_BEHAVIOR_HAPPEND) {}

CZPKError::CZPKError(const CZPKStatus& status) : std::runtime_error(""), m_status(status) {}

std::string CZPKError::GetStatus() const {
    return m_status.GetStatus();
}

}  // namespace varno_zpk
