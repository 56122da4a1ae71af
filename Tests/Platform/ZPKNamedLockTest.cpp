// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKNamedLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "Base/ZPKFileDescriptor.h"
#include "Tests/Platform/OtherUser.h"

namespace {

class ZPKNamedLockTest : public ::testing::Test {
protected:
    /// Another test's process must not hold it.
    const std::string m_name = "TestLock-" + std::to_string(::getpid());
    ZPKNamedLock m_lock;
    ZPKNamedLock m_other;
};

void endOf(pid_t child) {
    ::kill(child, SIGKILL);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST_F(ZPKNamedLockTest, OneHoldsAName) {
    EXPECT_TRUE(m_lock.take(m_name));
    EXPECT_FALSE(m_other.take(m_name));
    EXPECT_TRUE(m_other.take(m_name + "2"));
}

TEST_F(ZPKNamedLockTest, GoesWithItsObject) {
    EXPECT_TRUE(ZPKNamedLock().take(m_name));
    EXPECT_TRUE(m_lock.take(m_name));
}

TEST_F(ZPKNamedLockTest, ANameTakenLetsGoTheOneBefore) {
    EXPECT_TRUE(m_lock.take(m_name));
    EXPECT_TRUE(m_lock.take(m_name + "2"));
    EXPECT_TRUE(m_other.take(m_name));
    EXPECT_TRUE(m_lock.take(m_name + "2"));
}

TEST_F(ZPKNamedLockTest, GoesWithAProcessThatIsKilled) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const ZPKFileDescriptor reader(ends[0]);
    ZPKFileDescriptor writer(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) {
        const char answer = m_other.take(m_name) ? 'y' : 'n';
        if (::write(writer.get(), &answer, 1) == 1) {
            ::pause();
        }
        ::_exit(0);
    }
    ASSERT_TRUE(writer.close());
    char answer = 0;
    EXPECT_EQ(::read(reader.get(), &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    EXPECT_FALSE(m_lock.take(m_name));
    endOf(child);
    EXPECT_TRUE(m_lock.take(m_name));
}

TEST_F(ZPKNamedLockTest, NoProgramInheritsIt) {
    pid_t child = -1;
    {
        ZPKNamedLock held;
        EXPECT_TRUE(held.take(m_name));
        char program[] = "/bin/sleep";
        char seconds[] = "60";
        char* arguments[] = {program, seconds, nullptr};
        ASSERT_EQ(::posix_spawn(&child, program, nullptr, nullptr, arguments, environ), 0);
    }
    EXPECT_TRUE(m_lock.take(m_name));
    endOf(child);
}

TEST_F(ZPKNamedLockTest, OfLongNamesTheBeginningsCount) {
    const std::string name = m_name + std::string(1000, 'x');
    EXPECT_TRUE(m_lock.take(name));
    EXPECT_FALSE(m_other.take(name + "y"));
    EXPECT_TRUE(m_other.take("2" + name));
}

TEST_F(ZPKNamedLockTest, UsersHaveNamesOfTheirOwn) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    EXPECT_TRUE(m_lock.take(m_name));
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges([&] { return m_other.take(m_name); }));
}

TEST_F(ZPKNamedLockTest, WithoutADescriptorNothingIsHeld) {
    EXPECT_TRUE(zpk_test::answerWithoutPrivileges([&] {
        const struct rlimit none = {0, 0};
        return ::setrlimit(RLIMIT_NOFILE, &none) == 0 && !m_other.take(m_name);
    }));
    EXPECT_TRUE(m_lock.take(m_name));
}

}  // namespace
