// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKCDSearchWindowController.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "Common/CResourceBundle.h"
#include "Tests/Support/ScriptedFrontEnd.h"
#include "Tests/Support/TemporaryFolder.h"
#include "UserInterface/ZPKRemovableVolumes.h"

namespace fs = std::filesystem;
using zpk_test::ScriptedFrontEnd;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

namespace {

using Lines = std::vector<std::string>;

/// Folders that stand for mounted volumes, in order; true marks an optical disc.
class TestVolumes : public ZPKRemovableVolumes {
public:
    std::vector<std::pair<std::string, bool>> volumes;
    std::function<void()> onAsked;

    Lines mountedRemovableMedia() const override {
        if (onAsked) {
            onAsked();
        }
        Lines paths;
        for (const auto& [path, isDisc] : volumes) {
            paths.push_back(path);
        }
        return paths;
    }
    bool isCDMediaAtPath(const std::string& path) const override {
        for (const auto& [volume, isDisc] : volumes) {
            if (volume == path) {
                return isDisc;
            }
        }
        return false;
    }
};

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

class ZPKCDSearchWindowControllerTest : public ::testing::Test {
protected:
    ZPKCDSearchWindowControllerTest() {
        for (const char* file :
             {"Setup.app/Contents/Info.plist", "Sub/one.bin", "top.txt", "Sub/a/b/deep.dat"}) {
            writeFile(m_disc + "/" + file, "");
        }
        fs::create_directory(m_disc + "/empty");
        m_volumes.volumes = {{m_disc, true}};
    }

    bool finds(const Lines& searchPaths) {
        ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, searchPaths, {});
        controller.pushSearch();
        return controller.isFind();
    }

    Lines loggedAfter(const std::string& first) const {
        const Lines log = m_frontEnd.log();
        return Lines(std::find(log.begin(), log.end(), first), log.end());
    }

    TemporaryFolder m_folder;
    std::string m_disc = m_folder / "disc";
    ScriptedFrontEnd m_frontEnd;
    TestVolumes m_volumes;
};

TEST_F(ZPKCDSearchWindowControllerTest, WindowIsFilledInOrder) {
    const ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"x"}, {"Tandem", "", "Set"});
    EXPECT_EQ(m_frontEnd.log(),
              (Lines{"disc: center", "disc: font 0=ZPKString_FontName_ForMac",
                     "disc: font 1=ZPKString_FontName_ForMac", "disc: font 2=ZPKString_FontName_ForMac",
                     "disc: font 3=ZPKString_FontName_ForMac", "disc: title=ZPKString_DISCCHECK_TITLE",
                     "disc: message=ZPKString_DISCCHECK_MESSAGE", "disc: search=ZPKString_DISCCHECK_START",
                     "disc: cancel=ZPKString_DISCCHECK_CANCEL", "disc: products=Tandem\n\nSet"}));
    EXPECT_FALSE(controller.isFind());
}

TEST_F(ZPKCDSearchWindowControllerTest, EmptyFontNameKeepsTheStandardFont) {
    writeFile(m_folder / "UILang/en/ZPKStringTable.def", "ZPKString_FontName_ForMac = ;");
    varno_zpk::CResourceBundle::AddDefaultBundlePath((m_folder / "UILang").c_str());
    const ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {}, {});
    const Lines log = m_frontEnd.log();
    EXPECT_EQ(log[1], "disc: title=ZPKString_DISCCHECK_TITLE");
    EXPECT_EQ(log.back(), "disc: products=");
}

TEST_F(ZPKCDSearchWindowControllerTest, PathsAndPatterns) {
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

TEST_F(ZPKCDSearchWindowControllerTest, AnySearchPathSuffices) {
    EXPECT_TRUE(finds({"none", "*.none", "top.txt"}));
    EXPECT_TRUE(finds({"top.txt", "none"}));
    EXPECT_FALSE(finds({"none", "*.none"}));
    EXPECT_FALSE(finds({}));
}

TEST_F(ZPKCDSearchWindowControllerTest, OnlyOpticalDiscsCount) {
    m_volumes.volumes = {{m_disc, false}};
    EXPECT_FALSE(finds({"top.txt"}));
    fs::create_directory(m_folder / "other");
    m_volumes.volumes = {{m_disc, false}, {m_folder / "other", true}};
    EXPECT_FALSE(finds({"top.txt"}));
    m_volumes.volumes = {{m_folder / "other", true}, {m_disc, true}};
    EXPECT_TRUE(finds({"top.txt"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, NoVolumesIsTold) {
    m_volumes.volumes.clear();
    EXPECT_FALSE(finds({"top.txt"}));
    const std::string alert = "alert 2: ZPKString_UPDATE_INVALID_DISC||ZPKString_OK";
    EXPECT_EQ(loggedAfter(alert), (Lines{alert, "disc: gone"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, VanishedVolumeIsNotFound) {
    m_volumes.volumes = {{m_folder / "gone", true}};
    EXPECT_FALSE(finds({"top.txt", "*.txt"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, UnsuccessfulSearchShowsAnEndlessBarThenTheAlert) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"none"}, {});
    controller.pushSearch();
    EXPECT_EQ(loggedAfter("progress: center"),
              (Lines{"progress: center", "bar: min=0", "bar: max=100", "bar: threaded", "bar: indeterminate",
                     "bar: start", "progress: front", "progress: title=ZPKString_DISCCHECK_SERACHING",
                     "session: begin", "session: end", "bar: stop", "progress: close", "progress: gone",
                     "alert 2: ZPKString_UPDATE_INVALID_DISC||ZPKString_OK"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, FoundDiscEndsTheModalLoopAndClosesTheWindow) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    m_frontEnd.onDiscWindow = [](const ZPKCDSearchWindow::Actions& actions) { actions.pushSearch(); };
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseStop);
    EXPECT_TRUE(controller.isFind());
    EXPECT_EQ(loggedAfter("progress: close"),
              (Lines{"progress: close", "progress: gone", "disc: close", "modal: end -1000"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, CancelAbortsAndCloses) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {}, {});
    m_frontEnd.onDiscWindow = [](const ZPKCDSearchWindow::Actions& actions) { actions.pushCancel(); };
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
    EXPECT_EQ(loggedAfter("modal: begin"), (Lines{"modal: begin", "disc: close", "modal: end -1001"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, CloseBoxAbortsAndLetsTheWindowClose) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {}, {});
    bool closes = false;
    m_frontEnd.onDiscWindow = [&closes](const ZPKCDSearchWindow::Actions& actions) {
        closes = actions.windowShouldClose();
    };
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
    EXPECT_TRUE(closes);
    EXPECT_FALSE(controller.isFind());
}

TEST_F(ZPKCDSearchWindowControllerTest, ASecondPressSearchesAfresh) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"*.new"}, {});
    controller.pushSearch();
    EXPECT_FALSE(controller.isFind());
    writeFile(m_disc + "/late.new", "");
    controller.pushSearch();
    EXPECT_TRUE(controller.isFind());
}

TEST_F(ZPKCDSearchWindowControllerTest, OnceFoundStaysFound) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    controller.pushSearch();
    m_volumes.volumes.clear();
    controller.pushSearch();
    EXPECT_TRUE(controller.isFind());
}

TEST_F(ZPKCDSearchWindowControllerTest, SearchRunsOnAThreadOfItsOwn) {
    std::thread::id searching;
    m_volumes.onAsked = [&searching] { searching = std::this_thread::get_id(); };
    finds({"none"});
    EXPECT_NE(searching, std::thread::id());
    EXPECT_NE(searching, std::this_thread::get_id());
}

TEST_F(ZPKCDSearchWindowControllerTest, FailureInTheSearchEndsItAsNotFound) {
    m_volumes.onAsked = [] { throw std::runtime_error("the device is gone"); };
    EXPECT_FALSE(finds({"top.txt"}));
}

TEST_F(ZPKCDSearchWindowControllerTest, ListIsMadeOncePerVolumeAndSearch) {
    const FolderOpenings openings(m_disc + "/Sub");
    EXPECT_FALSE(finds({"*.none"}));
    const int once = openings.taken();
    EXPECT_GT(once, 0);
    EXPECT_FALSE(finds(Lines(20, "*.none")));
    EXPECT_EQ(openings.taken(), once);
    EXPECT_FALSE(finds(Lines(20, "none")));
    EXPECT_EQ(openings.taken(), 0) << "plain paths need no list";
}

TEST_F(ZPKCDSearchWindowControllerTest, ManyStarsOnManyFilesEnd) {
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

TEST_F(ZPKCDSearchWindowControllerTest, BrokenProgressFormCancels) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {"top.txt"}, {});
    m_frontEnd.formsAreBroken = true;
    m_frontEnd.onDiscWindow = [](const ZPKCDSearchWindow::Actions& actions) { actions.pushSearch(); };
    EXPECT_EQ(m_frontEnd.runModalForWindow(*controller.window()), ZPKModalResponseAbort);
    EXPECT_FALSE(controller.isFind());
}

}  // namespace
