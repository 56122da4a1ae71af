// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Platform/OtherUser.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zpk_test {

namespace {

constexpr uid_t kNobody = 65534;

}  // namespace

void becomeUserWithoutPrivileges() {
    if (::geteuid() == 0 &&
        (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
        ::_exit(2);
    }
}

bool answerWithoutPrivileges(const std::function<bool()>& action) {
    const pid_t child = ::fork();
    if (child == 0) {
        becomeUserWithoutPrivileges();
        ::_exit(action() ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << "status " << status;
    return status == 0;
}

void giveToUserWithoutPrivileges(const std::string& path) {
    if (::geteuid() == 0) {
        ASSERT_EQ(::lchown(path.c_str(), kNobody, kNobody), 0) << path;
    }
}

}  // namespace zpk_test
