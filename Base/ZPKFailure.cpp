// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKFailure.h"

#include <system_error>

#include "Base/ZPKTerminalText.h"

ZPKFailure ZPKFailure::ofSystem(std::string path, int error) {
    return {std::move(path), systemReason(error)};
}

std::string ZPKFailure::message() const {
    return ZPKTerminalText::printable(m_path) + ": " + ZPKTerminalText::printable(m_reason);
}

std::string ZPKFailure::systemReason(int error) {
    return std::generic_category().message(error);
}
