// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <new>

#include "Package/CDirectoryHolder.h"
#include "Tests/Support/FailingAllocation.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CDirectoryHolder;
using zpk_test::FailingAllocation;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

using Paths = std::vector<std::string>;

bool exists(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0;
}

/// Runs `action` with its N-th allocation failing; true when that came out as an exception.
template <typename Action>
bool failsAtAllocation(std::size_t number, Action action) {
    const FailingAllocation failing(number);
    try {
        action();
    } catch (const std::bad_alloc&) {
        return true;
    }
    return false;
}

constexpr std::size_t kMoreThanEver = 10'000;

TEST(CDirectoryHolderAllocationTest, FailureWhileMakingAFolderDeletesIt) {
    const TemporaryFolder folder;
    const std::string path = folder / "a folder whose path does not fit into a short string";
    const auto make = [&] { const CDirectoryHolder holder(path, ""); };
    std::size_t number = 1;
    for (; number < kMoreThanEver; ++number) {
        // An old folder is what is still there when the very first step fails.
        writeFile(path + "/old", "old");
        if (!failsAtAllocation(number, make)) {
            break;
        }
        EXPECT_FALSE(exists(path)) << "failing allocation " << number;
    }
    EXPECT_GT(number, 3u) << "some allocations were seen to fail";
    ASSERT_LT(number, kMoreThanEver);
    EXPECT_TRUE(exists(path) && !exists(path + "/old"));
}

TEST(CDirectoryHolderAllocationTest, FailureWhileMakingAFolderLeavesTheRemovePathAlone) {
    const TemporaryFolder folder;
    const std::string path = folder / "a folder whose path does not fit into a short string";
    const std::string other = folder / "another one whose path does not fit into a short string";
    writeFile(other + "/kept", "kept");
    std::size_t failures = 0;
    for (std::size_t number = 1; number < kMoreThanEver; ++number) {
        std::unique_ptr<CDirectoryHolder> holder;
        if (!failsAtAllocation(number, [&] { holder = std::make_unique<CDirectoryHolder>(path, other); })) {
            break;
        }
        ++failures;
        EXPECT_TRUE(exists(other + "/kept")) << "failing allocation " << number;
    }
    EXPECT_GT(failures, 3u);
    EXPECT_FALSE(exists(other)) << "the one that was made deletes it";
}

TEST(CDirectoryHolderAllocationTest, FailureInAListDeletesTheFoldersMadeBefore) {
    const TemporaryFolder folder;
    const std::string tail = " folder whose path does not fit into a short string";
    const Paths paths{folder / ("first" + tail), folder / ("second" + tail), folder / ("third" + tail)};
    const auto make = [&] { const CDirectoryHolder holder(paths, {}); };
    // For each folder, whether it was seen to fail and be left as it was, those before it being gone.
    std::vector<bool> sawLeft(paths.size());
    std::size_t number = 1;
    for (; number < kMoreThanEver; ++number) {
        for (const std::string& path : paths) {
            writeFile(path + "/old", "old");
        }
        if (!failsAtAllocation(number, make)) {
            break;
        }
        std::size_t gone = 0;
        while (gone < paths.size() && !exists(paths[gone])) {
            ++gone;
        }
        for (std::size_t index = gone + 1; index < paths.size(); ++index) {
            EXPECT_TRUE(exists(paths[index] + "/old")) << "not reached, failing allocation " << number;
        }
        if (gone < paths.size() && exists(paths[gone] + "/old")) {
            sawLeft[gone] = true;
        }
    }
    ASSERT_LT(number, kMoreThanEver);
    EXPECT_EQ(sawLeft, std::vector<bool>(paths.size(), true));
    for (const std::string& path : paths) {
        EXPECT_TRUE(exists(path) && !exists(path + "/old")) << path;
    }
}

TEST(CDirectoryHolderAllocationTest, FailureWhileDeletingIsSwallowedAndEndsIt) {
    const TemporaryFolder folder;
    const std::string tail = " folder whose path does not fit into a short string";
    const Paths paths{folder / ("first" + tail), folder / ("second" + tail), folder / ("third" + tail)};
    std::size_t number = 1;
    bool sawTheRestLeft = false;
    for (;; ++number) {
        ASSERT_LT(number, kMoreThanEver);
        auto holder = std::make_unique<CDirectoryHolder>(paths, paths);
        bool allGranted = false;
        {
            const FailingAllocation failing(number);
            holder.reset();
            allGranted = !FailingAllocation::hasFailed();
        }
        const bool isThere[] = {exists(paths[0]), exists(paths[1]), exists(paths[2])};
        EXPECT_TRUE(isThere[0] <= isThere[1] && isThere[1] <= isThere[2]) << "what follows a failure stays";
        sawTheRestLeft |= isThere[2];
        if (allGranted) {
            EXPECT_FALSE(isThere[0] || isThere[1] || isThere[2]);
            break;
        }
    }
    EXPECT_TRUE(sawTheRestLeft);
}

}  // namespace
