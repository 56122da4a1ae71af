// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

namespace zpk_test {

/// Makes root the user "nobody" for good; ends the process with status 2 where that fails. For a child
/// process.
void becomeUserWithoutPrivileges();

/// Runs `action` in a child process as that user and gives what it answered; as the current user where
/// that one is not root. For checks that root's rights would make meaningless.
bool answerWithoutPrivileges(const std::function<bool()>& action);

/// Gives `path` to that user.
void giveToUserWithoutPrivileges(const std::string& path);

}  // namespace zpk_test
