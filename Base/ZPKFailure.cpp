// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKFailure.h"

#include <cstring>

#include "Base/ZPKTerminalText.h"
#include "Base/ZPKTraceText.h"

ZPKFailure ZPKFailure::ofSystem(std::string path, int error) {
    return {std::move(path), systemReason(error)};
}

std::string ZPKFailure::message() const {
    return ZPKTerminalText::printable(m_path, ZPKTraceText::kLongest) + ": " +
           ZPKTerminalText::printable(m_reason, ZPKTraceText::kLongest);
}

std::string ZPKFailure::systemReason(int error) {
    // Of the library's texts the one that no locale translates and no other thread overwrites.
    const char* const text = ::strerrordesc_np(error);
    return text != nullptr ? text : "Unknown error " + std::to_string(error);
}
