// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace zpk_test {

/// How many instructions of its own a program executes, which no load of the machine changes; 0, with a
/// failure of the test, where the program does not end with that status. The words hold no apostrophe.
double instructionsOf(const std::vector<std::string>& command, int status = 0);

}  // namespace zpk_test
