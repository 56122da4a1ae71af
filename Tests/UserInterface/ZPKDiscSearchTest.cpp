// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKDiscSearch.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Support/TemporaryFolder.h"
#include "Tests/UserInterface/ScriptedVolumes.h"

namespace fs = std::filesystem;
using zpk_test::ScriptedVolumes;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

namespace {

using Lines = std::vector<std::string>;

/// Counts how often a folder is opened, as it is for each listing.
class FolderOpenings {
public:
    explicit FolderOpenings(const std::string& folder) {
        // The closings keep the host from making one event of several openings.
        EXPECT_GE(inotify_add_watch(m_events, folder.c_str(), IN_OPEN | IN_CLOSE), 0);
    }
    ~FolderOpenings() { close(m_events); }
    FolderOpenings(const FolderOpenings&) = delete;
    FolderOpenings& operator=(const FolderOpenings&) = delete;

    /// The openings since the last call.
    int taken() const {
        int count = 0;
        alignas(inotify_event) char block[4096];
        for (ssize_t size; (size = read(m_events, block, sizeof(block))) > 0;) {
            for (ssize_t at = 0; at < size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(block + at);
                // An event of an item inside carries its name.
                count += (event->mask & IN_OPEN) != 0 && event->len == 0 ? 1 : 0;
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
        return count;
    }

private:
    const int m_events = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
};

class ZPKDiscSearchTest : public ::testing::Test {
protected:
    ZPKDiscSearchTest() {
        for (const char* file :
             {"Setup.app/Contents/Info.plist", "Sub/one.bin", "top.txt", "Sub/a/b/deep.dat"}) {
            writeFile(m_disc + "/" + file, "");
        }
        fs::create_directory(m_disc + "/empty");
        m_volumes.volumes = {{m_disc, true}};
    }

    bool finds(const Lines& searchPaths) const {
        return ZPKDiscSearch(m_volumes, searchPaths).findsDisc(m_stop.get_token());
    }

    TemporaryFolder m_folder;
    std::string m_disc = m_folder / "disc";
    ScriptedVolumes m_volumes;
    std::stop_source m_stop;
};

TEST_F(ZPKDiscSearchTest, PathsAndPatterns) {
    struct Row {
        const char* searchPath;
        bool found;
    };
    const Row rows[] = {
        {"top.txt", true},
        {"TOP.TXT", false},
        {"Sub/a/b/deep.dat", true},
        {"Sub", true},  // a folder serves as well as a file
        {"empty", true},
        {"", true},  // the disc itself
        {"/top.txt", true},
        {"none", false},
        {"../disc/top.txt", true},  // appended as it stands
        {"../disc/*.txt", false},   // compared with the listed paths as it stands
        {"*/top.txt", true},        // the star continues the volume's own path and may match nothing
        {"*top.txt", true},
        {"*/Setup.app", false},  // only files are listed
        {"*/Info.plist", true},
        {"Sub/*.bin", true},
        {"Sub/?ne.bin", true},
        {"?op.txt", true},  // begins below the disc, as any pattern without a star in front
        {"?top.txt", false},
        {"Sub/??ne.bin", false},
        {"*/deep.dat", true},
        {"Sub*deep*", true},  // a star matches separators, too
        {"?", false},
        {"t?p.txt", true},
        {"emp*", false},
        {"*", true},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(finds({row.searchPath}), row.found) << "'" << row.searchPath << "'";
    }
}

TEST_F(ZPKDiscSearchTest, AnySearchPathSuffices) {
    EXPECT_TRUE(finds({"none", "*.none", "top.txt"}));
    EXPECT_TRUE(finds({"top.txt", "none"}));
    EXPECT_FALSE(finds({"none", "*.none"}));
    EXPECT_FALSE(finds({}));
}

TEST_F(ZPKDiscSearchTest, OnlyOpticalDiscsCount) {
    m_volumes.volumes = {{m_disc, false}};
    EXPECT_FALSE(finds({"top.txt"}));
    fs::create_directory(m_folder / "other");
    m_volumes.volumes = {{m_disc, false}, {m_folder / "other", true}};
    EXPECT_FALSE(finds({"top.txt"}));
    m_volumes.volumes = {{m_folder / "other", true}, {m_disc, true}};
    EXPECT_TRUE(finds({"top.txt"}));
}

TEST_F(ZPKDiscSearchTest, VanishedVolumeIsNotFound) {
    m_volumes.volumes = {{m_folder / "gone", true}};
    EXPECT_FALSE(finds({"top.txt", "*.txt"}));
}

TEST_F(ZPKDiscSearchTest, ListIsMadeOncePerVolumeAndSearch) {
    const FolderOpenings openings(m_disc + "/Sub");
    EXPECT_FALSE(finds({"*.none"}));
    const int once = openings.taken();
    EXPECT_GT(once, 0);
    EXPECT_FALSE(finds(Lines(20, "*.none")));
    EXPECT_EQ(openings.taken(), once);
    EXPECT_FALSE(finds(Lines(20, "none")));
    EXPECT_EQ(openings.taken(), 0) << "plain paths need no list";
}

TEST_F(ZPKDiscSearchTest, ManyStarsOnManyFilesEnd) {
    const std::string name(200, 'a');
    for (int index = 0; index < 300; ++index) {
        writeFile(m_disc + "/" + std::to_string(index) + name, "");
    }
    std::string stars;
    for (int index = 0; index < 60; ++index) {
        stars += "*a";
    }
    EXPECT_FALSE(finds({stars + "*b"}));
    EXPECT_TRUE(finds({stars + "*"}));
}

TEST_F(ZPKDiscSearchTest, EachDiscHasAListOfItsOwn) {
    writeFile(m_folder / "second/Sub/two.dat", "");
    m_volumes.volumes = {{m_disc, true}, {m_folder / "second", true}};
    EXPECT_TRUE(finds({"Sub/t*.dat"}));
    EXPECT_TRUE(finds({"none", "*/two.dat"}));
    m_volumes.volumes = {{m_folder / "second", true}, {m_disc, true}};
    EXPECT_TRUE(finds({"Sub/o*.bin"}));
}

TEST_F(ZPKDiscSearchTest, StopsAtTheFirstDiscFound) {
    writeFile(m_folder / "second/top.txt", "");
    m_volumes.volumes = {{m_disc, true}, {m_folder / "second", true}};
    Lines looked;
    m_volumes.onLooked = [&looked](const std::string& path) { looked.push_back(path); };
    const FolderOpenings openings(m_folder / "second");
    for (const char* searchPath : {"top.txt", "*.txt"}) {
        looked.clear();
        EXPECT_TRUE(finds({searchPath}));
        EXPECT_EQ(looked, Lines{m_disc});
        EXPECT_EQ(openings.taken(), 0);
    }
}

TEST_F(ZPKDiscSearchTest, StopsAtTheFirstSearchPathThatIsThere) {
    const FolderOpenings openings(m_disc + "/Sub");
    EXPECT_TRUE(finds({"top.txt", "*.none"}));
    EXPECT_EQ(openings.taken(), 0);
}

TEST_F(ZPKDiscSearchTest, FindsNothingMoreOnceItIsAskedToStop) {
    Lines looked;
    m_volumes.volumes = {{m_folder / "other", true}, {m_disc, true}};
    m_volumes.onLooked = [&](const std::string& path) {
        looked.push_back(path);
        m_stop.request_stop();
    };
    EXPECT_FALSE(finds({"top.txt"}));
    EXPECT_EQ(looked, Lines{m_folder / "other"});
    m_volumes.onLooked = nullptr;
    m_volumes.volumes = {{m_disc, true}};
    EXPECT_FALSE(finds({"top.txt"}));
    EXPECT_FALSE(finds({"*.txt"}));
}

TEST_F(ZPKDiscSearchTest, StopIsNoticedOnTheDiscThatIsLookedAt) {
    m_volumes.onLooked = [this](const std::string&) { m_stop.request_stop(); };
    const FolderOpenings openings(m_disc + "/Sub");
    EXPECT_FALSE(finds({"top.txt"}));
    EXPECT_FALSE(finds({"*.txt"}));
    EXPECT_EQ(openings.taken(), 0);
}

}  // namespace
