// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

namespace zpk_test {

/// Runs `action` in a child process as the user "nobody" and gives what it answered; as the current
/// user where that one is not root. For checks that root's rights would make meaningless.
bool answerWithoutPrivileges(const std::function<bool()>& action);

/// Gives `path` to the user that `AnswerWithoutPrivileges` runs as.
void giveToUserWithoutPrivileges(const std::string& path);

}  // namespace zpk_test
