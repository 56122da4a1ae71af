// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKDiagnostic.h"

#include <cstdio>
#include <string>

void ZPKDiagnostic::tell(std::initializer_list<std::string_view> parts) {
    std::string line("Zephyrkit: ");
    for (const std::string_view part : parts) {
        line.append(part);
    }
    line += '\n';
    // In one piece, which no other thread's line comes between.
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}
