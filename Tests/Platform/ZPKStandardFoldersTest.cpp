// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKStandardFolders.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Platform/OtherUser.h"
#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::answerWithoutPrivileges;
using zpk_test::giveToUserWithoutPrivileges;
using zpk_test::ScopedEnvironment;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

using Folder = std::optional<std::string>;

std::string privateName() {
    return "com.varno.zephyrkit-" + std::to_string(::geteuid());
}

mode_t modeOf(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0 ? attributes.st_mode & 07777 : 0;
}

TEST(ZPKStandardFoldersTest, LocalLibraryIsTheFirstAbsoluteDataFolder) {
    struct Row {
        std::optional<std::string> value;
        Folder folder;
    };
    const Row rows[] = {{std::nullopt, "/usr/local/share"},
                        {"", "/usr/local/share"},
                        {"/opt/share", "/opt/share"},
                        {"/opt/share/:/usr/share", "/opt/share"},
                        {":relative:/x", "/x"},
                        {"relative", std::nullopt},
                        {":::", std::nullopt},
                        {"/", "/"},
                        {"/a b/\xC3\xA9", "/a b/\xC3\xA9"}};
    for (const Row& row : rows) {
        const ScopedEnvironment environment("XDG_DATA_DIRS", row.value);
        SCOPED_TRACE(row.value.value_or("(unset)"));
        EXPECT_EQ(ZPKStandardFolders::localLibraryFolder(), row.folder);
        EXPECT_EQ(
            ZPKStandardFolders::localApplicationSupportFolder(),
            row.folder ? Folder((*row.folder == "/" ? "" : *row.folder) + "/Application Support") : Folder());
    }
}

TEST(ZPKStandardFoldersTest, UsersFolderIsHome) {
    EXPECT_EQ(ZPKStandardFolders::usersFolder(), "/home");
}

TEST(ZPKStandardFoldersTest, HomeFolderComesFromTheEnvironmentThenTheUserDatabase) {
    const std::string known = ::getpwuid(::geteuid())->pw_dir;
    struct Row {
        std::optional<std::string> value;
        std::string folder;
    };
    for (const Row& row : {Row{"/home/someone/", "/home/someone"}, Row{std::nullopt, known}, Row{"", known},
                           Row{"relative", known}}) {
        const ScopedEnvironment environment("HOME", row.value);
        EXPECT_EQ(ZPKStandardFolders::homeFolder(), row.folder) << row.value.value_or("(unset)");
    }
}

TEST(ZPKStandardFoldersTest, TemporaryFolderOfTheUsersOwnIsUsedAsItIs) {
    const TemporaryFolder folder;
    for (const mode_t mode : {0700u, 0755u, 0711u}) {
        ::chmod(folder.path().c_str(), mode);
        for (const char* const ending : {"", "/", "///"}) {
            const ScopedEnvironment environment("TMPDIR", folder.path() + ending);
            EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), folder.path()) << mode << ending;
        }
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(ZPKStandardFoldersTest, StickyTemporaryFolderThatOthersMayWriteToGetsAPrivateOne) {
    for (const mode_t mode : {01777u, 01770u, 01720u, 01702u}) {
        const TemporaryFolder folder;
        const ScopedEnvironment environment("TMPDIR", folder.path());
        ::chmod(folder.path().c_str(), mode);
        const std::string expected = folder / privateName();
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), expected) << mode;
        EXPECT_EQ(modeOf(expected), 0700u) << mode;
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), expected) << "found again";
    }
}

TEST(ZPKStandardFoldersTest, TemporaryFolderThatOthersMayEmptyIsPassedOver) {
    const TemporaryFolder cache;
    ::chmod(cache.path().c_str(), 0755);
    const ScopedEnvironment cacheHome("XDG_CACHE_HOME", cache.path());
    for (const mode_t mode : {0777u, 0770u, 0720u, 0702u}) {
        const TemporaryFolder folder;
        const ScopedEnvironment environment("TMPDIR", folder.path());
        ::chmod(folder.path().c_str(), mode);
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), cache.path()) << mode;
        EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << mode;
    }
}

TEST(ZPKStandardFoldersTest, TemporaryFolderOfAnotherUserIsPassedOver) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs another user's folder";
    }
    const TemporaryFolder cache;
    const ScopedEnvironment cacheHome("XDG_CACHE_HOME", cache.path());
    for (const mode_t mode : {0700u, 0755u, 0777u, 01777u}) {
        const TemporaryFolder folder;
        giveToUserWithoutPrivileges(folder.path());
        ::chmod(folder.path().c_str(), mode);
        const ScopedEnvironment environment("TMPDIR", folder.path());
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), cache.path()) << mode;
        EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << mode;
    }
}

TEST(ZPKStandardFoldersTest, RootsTemporaryFolderCountsWhenItIsSticky) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs a folder of root's";
    }
    const TemporaryFolder cache;
    giveToUserWithoutPrivileges(cache.path());
    const TemporaryFolder folder;
    const ScopedEnvironment cacheHome("XDG_CACHE_HOME", cache.path());
    const ScopedEnvironment environment("TMPDIR", folder.path());
    ::chmod(folder.path().c_str(), 01777);
    EXPECT_TRUE(answerWithoutPrivileges(
        [&] { return ZPKStandardFolders::temporaryFolder() == folder / privateName(); }));
    for (const mode_t mode : {0755u, 0777u, 01755u}) {
        const TemporaryFolder other;
        ::chmod(other.path().c_str(), mode);
        const ScopedEnvironment otherEnvironment("TMPDIR", other.path());
        EXPECT_TRUE(answerWithoutPrivileges([&] {
            return ZPKStandardFolders::temporaryFolder() == cache.path();
        })) << mode;
    }
}

TEST(ZPKStandardFoldersTest, TemporaryFolderFallsBackToTmp) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "x");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    const std::optional<std::string> values[] = {
        std::nullopt, "", "relative", ".", folder / "file", folder / "missing", folder / "dangling"};
    struct stat attributes;
    const bool wasThere = ::lstat(("/tmp/" + privateName()).c_str(), &attributes) == 0;
    ASSERT_EQ(::chdir(folder.path().c_str()), 0);
    for (const std::optional<std::string>& value : values) {
        const ScopedEnvironment environment("TMPDIR", value);
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), "/tmp/" + privateName())
            << value.value_or("(unset)");
    }
    if (!wasThere) {
        ::rmdir(("/tmp/" + privateName()).c_str());
    }
}

TEST(ZPKStandardFoldersTest, TemporaryFolderBehindALinkIsUsed) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "real");
    ::chmod((folder / "real").c_str(), 0700);
    std::filesystem::create_directory_symlink("real", folder / "link");
    const ScopedEnvironment environment("TMPDIR", folder / "link");
    EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), folder / "link");
}

/// Somebody has put something in the private folder's place.
class ZPKStandardFoldersRefusalTest : public ::testing::Test {
protected:
    void SetUp() override {
        ::chmod(m_folder.path().c_str(), 01777);
        ::chmod(m_cacheFolder.path().c_str(), 0700);
    }

    void expectTheCacheInstead(const std::string& message = "") const {
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), m_cacheFolder.path()) << message;
        const ScopedEnvironment none("XDG_CACHE_HOME", "/dev/null");
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), std::nullopt) << message;
    }

    TemporaryFolder m_folder;
    TemporaryFolder m_cacheFolder;
    ScopedEnvironment m_environment{"TMPDIR", m_folder.path()};
    ScopedEnvironment m_cache{"XDG_CACHE_HOME", m_cacheFolder.path()};
    std::string m_private = m_folder / privateName();
};

TEST_F(ZPKStandardFoldersRefusalTest, PreparedLinkIsRefused) {
    std::filesystem::create_directory(m_folder / "trap");
    ::chmod((m_folder / "trap").c_str(), 0700);
    std::filesystem::create_directory_symlink("trap", m_private);
    expectTheCacheInstead();
}

TEST_F(ZPKStandardFoldersRefusalTest, PreparedFileIsRefused) {
    writeFile(m_private, "x");
    ::chmod(m_private.c_str(), 0700);
    expectTheCacheInstead();
}

TEST_F(ZPKStandardFoldersRefusalTest, WrongModeIsRefused) {
    std::filesystem::create_directory(m_private);
    for (const mode_t mode : {0755u, 0777u, 0710u, 0701u, 0500u, 0000u}) {
        ::chmod(m_private.c_str(), mode);
        expectTheCacheInstead(std::to_string(mode));
        EXPECT_EQ(modeOf(m_private), mode) << "is not repaired";
    }
}

TEST_F(ZPKStandardFoldersRefusalTest, AnotherOwnersFolderIsRefused) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs another user's folder";
    }
    std::filesystem::create_directory(m_private);
    ::chmod(m_private.c_str(), 0700);
    giveToUserWithoutPrivileges(m_private);
    expectTheCacheInstead();
}

TEST_F(ZPKStandardFoldersRefusalTest, FolderThatCannotBeMadeIsRefused) {
    // Others may write to it, its owner may not; root may anyhow, and takes another's part.
    ::chmod(m_folder.path().c_str(), 01577);
    if (::geteuid() == 0) {
        ::chmod(m_folder.path().c_str(), 01555);
        giveToUserWithoutPrivileges(m_cacheFolder.path());
    }
    EXPECT_TRUE(answerWithoutPrivileges(
        [this] { return ZPKStandardFolders::temporaryFolder() == m_cacheFolder.path(); }));
}

TEST_F(ZPKStandardFoldersRefusalTest, CacheFolderIsMadePrivateWhateverTheUmask) {
    writeFile(m_private, "x");
    const ScopedEnvironment cache("XDG_CACHE_HOME", m_cacheFolder / "new");
    const mode_t before = ::umask(0);
    EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), m_cacheFolder / "new");
    EXPECT_EQ(modeOf(m_cacheFolder / "new"), 0700u);
    ::rmdir((m_cacheFolder / "new").c_str());
    ::umask(0277);
    EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), m_cacheFolder / "new");
    EXPECT_EQ(modeOf(m_cacheFolder / "new"), 0700u);
    ::umask(before);
}

/// A folder on a file system from which programs may not run.
class ZPKStandardFoldersNoExecutionTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(m_mounted);
        m_isMounted = ::mount("none", m_mounted.c_str(), "tmpfs", MS_NOEXEC, "mode=0700") == 0;
        if (!m_isMounted) {
            GTEST_SKIP() << "may not mount";
        }
        ::chmod(m_mounted.c_str(), 0700);
    }
    void TearDown() override {
        if (m_isMounted) {
            ::umount(m_mounted.c_str());
        }
    }

    TemporaryFolder m_folder;
    std::string m_mounted = m_folder / "mounted";
    ScopedEnvironment m_temporary{"TMPDIR", m_mounted};
    bool m_isMounted = false;
};

TEST_F(ZPKStandardFoldersNoExecutionTest, CacheFolderIsUsedInstead) {
    const ScopedEnvironment cache("XDG_CACHE_HOME", m_folder / "new/cache/");
    EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), m_folder / "new/cache");
    EXPECT_EQ(modeOf(m_folder / "new/cache"), 0700u) << "made when missing";
}

TEST_F(ZPKStandardFoldersNoExecutionTest, CacheFolderInTheHomeFolderIsUsedInstead) {
    const ScopedEnvironment home("HOME", m_folder.path());
    for (const std::optional<std::string>& value :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>("relative")}) {
        const ScopedEnvironment cache("XDG_CACHE_HOME", value);
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), m_folder / ".cache") << value.value_or("(unset)");
    }
}

TEST_F(ZPKStandardFoldersNoExecutionTest, CacheFolderThatOthersMayWriteToGetsAPrivateOne) {
    const ScopedEnvironment cache("XDG_CACHE_HOME", m_folder / "cache");
    std::filesystem::create_directory(m_folder / "cache");
    ::chmod((m_folder / "cache").c_str(), 01777);
    EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), m_folder / ("cache/" + privateName()));
    ::chmod((m_folder / "cache").c_str(), 0777);
    EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), std::nullopt);
}

TEST_F(ZPKStandardFoldersNoExecutionTest, CacheFolderThatIsUnusableMeansNone) {
    writeFile(m_folder / "file", "x");
    for (const std::string& value : {m_folder / "file", m_folder / "file/below", m_mounted + "/cache"}) {
        const ScopedEnvironment cache("XDG_CACHE_HOME", value);
        EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), std::nullopt) << value;
    }
}

TEST_F(ZPKStandardFoldersNoExecutionTest, PrivateFolderThatIsMountedSoIsPassedOver) {
    const std::string sticky = m_folder / "sticky";
    const std::string place = sticky + "/" + privateName();
    std::filesystem::create_directories(place);
    ::chmod(sticky.c_str(), 01777);
    ASSERT_EQ(::mount(m_mounted.c_str(), place.c_str(), nullptr, MS_BIND, nullptr), 0);
    const ScopedEnvironment temporary("TMPDIR", sticky);
    const ScopedEnvironment cache("XDG_CACHE_HOME", m_folder / "cache");
    EXPECT_EQ(ZPKStandardFolders::temporaryFolder(), m_folder / "cache");
    ::umount(place.c_str());
}

}  // namespace
