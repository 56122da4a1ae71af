// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Removing where single calls fail. Stands alone: it answers those calls.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>

#include "Platform/ZPKFileManager.h"
#include "Tests/Support/FewDescriptors.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

/// What somebody else removes at the moment when this process is about to.
std::set<std::string> takenByAnother;
/// What cannot be removed, each as often as it stands here.
std::multiset<std::string> failing;

}  // namespace

extern "C" int unlinkat(int folder, const char* name, int flags) noexcept {
    if (const auto found = failing.find(name); found != failing.end()) {
        failing.erase(found);
        errno = EIO;
        return -1;
    }
    const auto removed = static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
    if (removed == 0 && takenByAnother.erase(name) > 0) {
        errno = ENOENT;
        return -1;
    }
    return removed;
}

namespace {

class ZPKTreeRemovalTest : public ::testing::Test {
protected:
    ZPKTreeRemovalTest() {
        zpk_test::writeFile(m_item + "/file", "x");
        zpk_test::writeFile(m_item + "/inner/other", "x");
    }
    ~ZPKTreeRemovalTest() override {
        takenByAnother.clear();
        failing.clear();
    }

    zpk_test::TemporaryFolder m_folder;
    const std::string m_item = m_folder / "item";
};

TEST_F(ZPKTreeRemovalTest, WhatAnotherHasRemovedMeanwhileIsRemoved) {
    takenByAnother = {"file", "other", "inner", "item"};
    EXPECT_TRUE(ZPKFileManager::removeItem(m_item));
    EXPECT_TRUE(takenByAnother.empty());
    EXPECT_FALSE(std::filesystem::exists(m_item));
}

TEST_F(ZPKTreeRemovalTest, WhatFailsOnceGoesAllTheSame) {
    for (const char* const name : {"file", "other", "inner", "item"}) {
        SCOPED_TRACE(name);
        zpk_test::writeFile(m_item + "/file", "x");
        zpk_test::writeFile(m_item + "/inner/other", "x");
        failing = {name};
        EXPECT_TRUE(ZPKFileManager::removeItem(m_item));
        EXPECT_TRUE(failing.empty());
        EXPECT_FALSE(std::filesystem::exists(m_item));
    }
}

TEST_F(ZPKTreeRemovalTest, EmptyFolderTakesNoDescriptor) {
    const std::string path = m_folder / "empty";
    std::filesystem::create_directory(path);
    const zpk_test::FewDescriptors none(0);
    EXPECT_TRUE(ZPKFileManager::removeItem(path));
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(ZPKFileManager::removeItem(m_item));
    EXPECT_TRUE(std::filesystem::exists(m_item + "/inner/other"));
}

TEST_F(ZPKTreeRemovalTest, WhatFailsTwiceIsToldWithItsName) {
    failing = {"other", "other"};
    const ZPKOutcome outcome = ZPKFileManager::removeItem(m_item);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure().message(), m_item + "/inner/other: Input/output error");
    EXPECT_TRUE(std::filesystem::exists(m_item + "/inner/other"));
    EXPECT_FALSE(std::filesystem::exists(m_item + "/file"));
}

}  // namespace
