// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKDurationText.h"

#include <cstdio>

namespace {

constexpr long long kSixty = 60;

}  // namespace

std::string ZPKDurationText(std::chrono::seconds elapsed) {
    const long long seconds = elapsed.count();
    const long long minutes = seconds / kSixty;
    char text[40];
    if (minutes < kSixty) {
        std::snprintf(text, sizeof(text), "%lld:%02lld", minutes, seconds % kSixty);
    } else {
        std::snprintf(text, sizeof(text), "%lld:%02lld:%02lld", minutes / kSixty, minutes % kSixty,
                      seconds % kSixty);
    }
    return text;
}
