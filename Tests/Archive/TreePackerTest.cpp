// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/TreePacker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Archive/Archive.h"
#include "Base/ZPKFileDescriptor.h"
#include "Tests/Archive/ArchiveFixture.h"

namespace {

using namespace zpk_test;

/// Makes folders one in the other, by descriptor, since their path is longer than the system takes;
/// gives the innermost one.
ZPKFileDescriptor makeDeepFolders(const std::string& top, const std::string& name, std::size_t levels) {
    EXPECT_EQ(::mkdir(top.c_str(), 0755), 0);
    ZPKFileDescriptor folder(::open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (std::size_t i = 0; i < levels && folder.isOpen(); ++i) {
        EXPECT_EQ(::mkdirat(folder.get(), name.c_str(), 0755), 0);
        folder = ZPKFileDescriptor(::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    EXPECT_TRUE(folder.isOpen());
    return folder;
}

void makeFileIn(const ZPKFileDescriptor& folder, const std::string& name) {
    const ZPKFileDescriptor file(::openat(folder.get(), name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    EXPECT_TRUE(file.isOpen()) << name;
}

std::vector<std::string> namesIn(const std::string& archive) {
    std::vector<std::string> names;
    KeepingSink sink;
    EXPECT_TRUE(zpk_archive::list(
        archive, [&](const zpk_archive::MemberDescription& member) { names.push_back(member.name); }, sink));
    EXPECT_TRUE(sink.errors.empty());
    return names;
}

TEST(TreePackerTest, PathAtTheFormatsLimitIsPackedAndOneByteMoreIsLeftOutAndTold) {
    const TemporaryFolder folder;
    // 1024 folders of 254 bytes and their slashes after "D" make 261121 bytes; the last folder brings
    // the path to 262000.
    constexpr std::size_t kLimit = 262142;
    const std::string part(254, 'p');
    ZPKFileDescriptor deep = makeDeepFolders(folder / "D", part, 1024);
    std::size_t length = 1 + 1024 * 255;
    for (const std::size_t size : {std::size_t{250}, std::size_t{250}, std::size_t{250}, std::size_t{125}}) {
        const std::string name(size, 'q');
        ASSERT_EQ(::mkdirat(deep.get(), name.c_str(), 0755), 0);
        deep = ZPKFileDescriptor(::openat(deep.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        length += 1 + size;
    }
    ASSERT_EQ(length, 262000U);
    makeFileIn(deep, std::string(kLimit - length - 1, 'a'));
    makeFileIn(deep, std::string(kLimit - length, 'b'));
    writeFile(folder / "D/z", "what comes after");
    const Outcome outcome = create(folder / "D", folder / "d.dat");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_TRUE(outcome.standardError.starts_with("ditto: D/" + part.substr(0, 158) + "...: "));
    EXPECT_TRUE(
        outcome.standardError.ends_with(": a CPIO archive cannot hold a path of more than 262142 bytes\n"));
    EXPECT_EQ(std::count(outcome.standardError.begin(), outcome.standardError.end(), '\n'), 1);
    const std::vector<std::string> names = namesIn(folder / "d.dat");
    ASSERT_EQ(names.size(), 1U + 1024 + 4 + 1 + 1);
    EXPECT_EQ(names.back(), "D/z");
    EXPECT_EQ(names[names.size() - 2].size(), kLimit);
    EXPECT_TRUE(names[names.size() - 2].ends_with("/" + std::string(kLimit - length - 1, 'a')));
    const Outcome unpacked = extract(folder / "d.dat", folder / "out");
    EXPECT_EQ(unpacked.exitStatus, 0) << unpacked.standardError;
    EXPECT_EQ(readFile(folder / "out/D/z"), "what comes after");
}

TEST(TreePackerTest, DepthIsBoundedByDescriptorsAndNotByTheStack) {
    rlimit descriptors{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &descriptors), 0);
    constexpr std::size_t kLevels = 3500;
    if (descriptors.rlim_max < kLevels + 100) {
        GTEST_SKIP() << "too few descriptors";
    }
    const TemporaryFolder folder;
    makeFileIn(makeDeepFolders(folder / "D", "n", kLevels), "leaf");
    const Outcome outcome =
        runProgram({ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent", folder / "D", folder / "d.dat"}, [] {
            // As little as a program can be started with.
            const rlimit stack{512 * 1024, 512 * 1024};
            ::setrlimit(RLIMIT_STACK, &stack);
        });
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    EXPECT_EQ(namesIn(folder / "d.dat").size(), kLevels + 2);
}

TEST(TreePackerTest, FolderThatIsOneDescriptorTooDeepIsToldAndTheRestIsPacked) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer opens descriptors of its own to look at an object";
#endif
    const TemporaryFolder folder;
    makeFileIn(makeDeepFolders(folder / "D", "n", 100), "leaf");
    writeFile(folder / "D/z", "what comes after");
    const Outcome outcome =
        runProgram({ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent", folder / "D", folder / "d.dat"}, [] {
            const rlimit few{60, 60};
            ::setrlimit(RLIMIT_NOFILE, &few);
        });
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_TRUE(outcome.standardError.ends_with(": Too many open files\n")) << outcome.standardError;
    EXPECT_EQ(namesIn(folder / "d.dat").back(), "D/z");
}

}  // namespace
