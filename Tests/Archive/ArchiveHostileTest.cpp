// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "Tests/Archive/HostileArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

TEST_F(HostileArchiveTest, NamesThatLeaveTheFolderAreRefusedOneByOne) {
    const std::string absolute = m_folder / "absolute";
    std::string deep;
    for (int i = 0; i < 2048; ++i) {
        deep += "d/";
    }
    std::vector<RawMember> members;
    for (const std::string& name :
         {std::string("../climb"), std::string("a/../../climb"), std::string(".//../climb"),
          std::string("a/.."), absolute, "/" + absolute, std::string(), std::string(300, 'n'),
          "d/" + std::string(65536, 'n'), deep + "x", std::string("../in-evil/file"), std::string("..")}) {
        for (std::uint32_t mode : {kFile, kFolder, kLink}) {
            members.push_back({name, mode, mode == kFolder ? "" : "../outside"});
        }
    }
    std::size_t refused = members.size();
    members.push_back({"\\x", kFile, "inside"});
    members.push_back({"C:x", kFile, "inside"});
    members.push_back({"good", kFile, "inside"});
    KeepingSink sink;
    writeFile(m_folder / "archive", makeOdc(members));
    EXPECT_FALSE(zpk_archive::extract(m_folder / "archive", m_folder / "in", sink));
    EXPECT_EQ(sink.errors.size(), refused);
    auto inside = snapshot(m_folder / "in");
    EXPECT_EQ(inside.size(), 3U);
    EXPECT_EQ(readFile(m_folder / "in/good"), "inside");
}

TEST_F(HostileArchiveTest, NothingIsWrittenThroughALink) {
    struct Row {
        const char* name;
        std::vector<RawMember> members;
    };
    const std::string outside = m_folder / "outside";
    for (const Row& row : std::vector<Row>{
             {"absolute link", {{"l", kLink, outside}, {"l/file", kFile, "bad"}}},
             {"relative link", {{"l", kLink, "../outside"}, {"l/file", kFile, "bad"}}},
             {"folder below a link",
              {{"l", kLink, "../outside"}, {"l/new", kFolder}, {"l/new/x", kFile, "bad"}}},
             {"link in the middle",
              {{"a", kFolder}, {"a/l", kLink, "../../outside"}, {"a/l/b/c", kFile, "bad"}}},
             {"chain", {{"a", kLink, "b"}, {"b", kLink, "../outside"}, {"a/file", kFile, "bad"}}},
             {"dangling", {{"d", kLink, "../created"}, {"d/x", kFile, "bad"}}},
             {"the folder itself as a link", {{".", kLink, "../outside"}, {"x", kFile, "good"}}},
             {"link onto link",
              {{"l", kLink, "../outside"}, {"l/m", kLink, "../sentinel"}, {"l/m", kFile, "bad"}}},
             {"prefix cache",
              {{"aaa/bbb/ccc", kFile, "x"}, {"aaa/b", kLink, "../../outside"}, {"aaa/b/file", kFile, "bad"}}},
         }) {
        SCOPED_TRACE(row.name);
        fs::remove_all(m_folder / "in");
        EXPECT_EQ(extractMembers(row.members).exitStatus, 1);
        EXPECT_EQ(neighbours(), m_before);
    }
}

TEST_F(HostileArchiveTest, LaterMemberReplacesALinkInsteadOfFollowingIt) {
    Outcome outcome = extractMembers({{"file", kLink, "../sentinel"},
                                      {"file", kFile, "mine"},
                                      {"folder", kLink, "../outside"},
                                      {"folder", S_IFDIR | 0700},
                                      {"folder/file", kFile, "mine"},
                                      {"swap", kFolder},
                                      {"swap", kLink, "../outside"},
                                      {"mode", S_IFLNK | 06777, "../sentinel", 0, 1, UINT64_MAX, 5}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    EXPECT_EQ(readFile(m_folder / "in/file"), "mine");
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(m_folder / "in/folder")));
    EXPECT_EQ(readFile(m_folder / "in/folder/file"), "mine");
    EXPECT_TRUE(fs::is_symlink(m_folder / "in/swap"));
}

TEST_F(HostileArchiveTest, LinksThatWereThereBeforeAreNotFollowed) {
    fs::create_symlink("../sentinel", m_folder / "in/file");
    fs::create_symlink("../outside", m_folder / "in/folder");
    fs::create_symlink("../outside", m_folder / "in/middle");
    fs::create_hard_link(m_folder / "sentinel", m_folder / "in/hard");
    m_before = neighbours();
    Outcome outcome = extractMembers({{"file", kFile, "mine"},
                                      {"folder", S_IFDIR | 0711},
                                      {"folder/file", kFile, "mine"},
                                      {"middle/file", kFile, "bad"},
                                      {"hard", kFile, "mine"}});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.standardError, "ditto: middle/file: a part of its path is no folder\n");
    EXPECT_EQ(readFile(m_folder / "in/file"), "mine");
    EXPECT_EQ(readFile(m_folder / "in/folder/file"), "mine");
    EXPECT_EQ(readFile(m_folder / "in/hard"), "mine");
    EXPECT_EQ(readFile(m_folder / "sentinel"), "untouched");
    m_before["sentinel"] = neighbours()["sentinel"];  // Its other name is gone.
}

TEST_F(HostileArchiveTest, HardLinksReachOnlyWhatTheArchiveBrought) {
    fs::create_directory(m_folder / "in/d");
    writeFile(m_folder / "in/old", "old");
    struct Row {
        const char* name;
        std::vector<RawMember> members;
    };
    for (const Row& row : std::vector<Row>{
             {"to a refused name", {{"../sentinel", kFile, "", 7, 2}, {"got", kFile, "", 7, 2}}},
             {"to an absolute name", {{m_folder / "sentinel", kFile, "", 7, 2}, {"got", kFile, "", 7, 2}}},
             {"to a FIFO", {{"fifo", S_IFIFO | 0644, "", 7, 2}, {"got", kFile, "", 7, 2}}},
             {"to a device", {{"null", S_IFCHR | 0644, "", 7, 2}, {"got", kFile, "", 7, 2}}},
             {"through a link",
              {{"l/file", kFile, "", 7, 2},
               {"l/file", kFile, "x"},
               {"l", kLink, "../outside"},
               {"l/got", kFile, "", 7, 2}}},
         }) {
        SCOPED_TRACE(row.name);
        writeFile(m_folder / "archive", makeNewc(row.members));
        fs::remove(m_folder / "in/got");
        EXPECT_EQ(extract(m_folder / "archive", m_folder / "in").exitStatus, 1);
        // The name that was refused is none of the file's, which is what the others make of it.
        struct stat got {};
        EXPECT_TRUE(::lstat((m_folder / "in/got").c_str(), &got) != 0 ||
                    (S_ISREG(got.st_mode) && got.st_nlink == 1 && got.st_size == 0));
        EXPECT_EQ(neighbours(), m_before);
    }
}

TEST_F(HostileArchiveTest, DataOfAHardLinkDoNotReachAStrangersFile) {
    // The first name is replaced by a link to the outside before the second one brings its data.
    writeFile(m_folder / "archive", makeNewc({{"first", kFile, "", 7, 2},
                                              {"first", kLink, "../sentinel"},
                                              {"second", kFile, "bad", 7, 2}}));
    Outcome outcome = extract(m_folder / "archive", m_folder / "in");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(readFile(m_folder / "sentinel"), "untouched");
}

TEST_F(HostileArchiveTest, StrangersWithOneInodeNumberStayApart) {
    // Each stands behind one from which it differs in a single respect.
    Outcome outcome = extractMembers({{"folder", S_IFDIR | 0755, "", 7, 2},
                                      {"a", kFile, "contents of a", 7, 3},
                                      {"c", S_IFREG | 0600, "contents of c", 7, 3},
                                      {"b", kFile, "other length", 7, 3},
                                      {"folder two", S_IFDIR | 0755, "", 7, 2},
                                      {"e", kFile, "", 7, 2}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    EXPECT_EQ(readFile(m_folder / "in/a"), "contents of a");
    EXPECT_EQ(readFile(m_folder / "in/b"), "other length");
    EXPECT_EQ(readFile(m_folder / "in/c"), "contents of c");
    EXPECT_EQ(readFile(m_folder / "in/e"), "");
    EXPECT_TRUE(fs::is_directory(m_folder / "in/folder two"));
}

TEST_F(HostileArchiveTest, HardLinkedFileGetsItsDataFromTheLastNameInNewc) {
    writeFile(m_folder / "archive", makeNewc({{"one", S_IFREG | 0400, "", 9, 3},
                                              {"two", S_IFREG | 0400, "", 9, 3},
                                              {"three", S_IFREG | 0400, "the data", 9, 3}}));
    letNobodyIn();
    Outcome outcome = extract(m_folder / "archive", m_folder / "in", becomeNobody);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    EXPECT_EQ(readFile(m_folder / "in/one"), "the data");
    EXPECT_EQ(snapshot(m_folder / "in")["two"].substr(0, 35), "type 100000 mode 400 time 100000000");
    EXPECT_TRUE(fs::equivalent(m_folder / "in/one", m_folder / "in/three"));
}

TEST_F(HostileArchiveTest, StrangerAfterTheDataHaveComeInNewcStaysApart) {
    writeFile(m_folder / "archive", makeNewc({{"one", kFile, "", 9, 5},
                                              {"two", kFile, "the data", 9, 5},
                                              {"stranger", kFile, "other data", 9, 5}}));
    Outcome outcome = extract(m_folder / "archive", m_folder / "in");
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    EXPECT_EQ(readFile(m_folder / "in/one"), "the data");
    EXPECT_EQ(readFile(m_folder / "in/two"), "the data");
    EXPECT_EQ(readFile(m_folder / "in/stranger"), "other data");
}

TEST_F(HostileArchiveTest, SpecialFilesAndSetUserIdBits) {
    Outcome outcome = extractMembers({{"fifo", S_IFIFO | 0644},
                                      {"null", S_IFCHR | 0666},
                                      {"disk", S_IFBLK | 0660},
                                      {"socket", S_IFSOCK | 0777},
                                      {"unknown", 0150644},
                                      {"setuid", S_IFREG | 06755, "x"},
                                      {"setgid folder", S_IFDIR | 02775},
                                      {"sticky folder", S_IFDIR | 01777}});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(std::count(outcome.standardError.begin(), outcome.standardError.end(), '\n'), 5);
    auto inside = snapshot(m_folder / "in");
    EXPECT_EQ(inside.size(), 3U);
    EXPECT_TRUE(inside["setuid"].starts_with("type 100000 mode 755 "));
    EXPECT_TRUE(inside["setgid folder"].starts_with("type 40000 mode 775 "));
    EXPECT_TRUE(inside["sticky folder"].starts_with("type 40000 mode 1777 "));
}

TEST_F(HostileArchiveTest, DuplicateNamesLastOneWins) {
    Outcome outcome = extractMembers({{"f", kFile, "first"},
                                      {"f", S_IFREG | 0600, "second"},
                                      {"x", kFile, "file first"},
                                      {"x", kFolder},
                                      {"x/y", kFile, "below"},
                                      {"e", kFolder},
                                      {"e", kFile, "folder first"}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    EXPECT_EQ(readFile(m_folder / "in/f"), "second");
    EXPECT_EQ(readFile(m_folder / "in/x/y"), "below");
    EXPECT_EQ(readFile(m_folder / "in/e"), "folder first");
    EXPECT_EQ(extractMembers({{"x", kFile, "a full folder does not vanish"}}).exitStatus, 1);
    EXPECT_EQ(readFile(m_folder / "in/x/y"), "below");
}

TEST_F(HostileArchiveTest, NamesAreEscapedInErrors) {
    Outcome outcome = extractMembers({{"../\x1b[2J\nditto: fine", kFile, "x"}});
    EXPECT_EQ(outcome.standardError, "ditto: ../\\x1b[2J\\nditto: fine: the name climbs out of the folder\n");
}

TEST_F(HostileArchiveTest, PathsBeyondTheSystemsLimitWork) {
    std::string name;
    for (int i = 0; i < 30; ++i) {
        name += std::string(200, 'p') + "/";
    }
    Outcome outcome = extractMembers({{name + "file", kFile, "deep"}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    Outcome packed = create(m_folder / "in", m_folder / "archive");
    EXPECT_EQ(packed.exitStatus, 0) << packed.standardError;
    fs::remove_all(m_folder / "in");
    EXPECT_EQ(extract(m_folder / "archive", m_folder / "in").exitStatus, 0);
    std::string listed;
    KeepingSink sink;
    zpk_archive::list(
        m_folder / "archive", [&](const auto& member) { listed = member.name; }, sink);
    EXPECT_EQ(listed, "in/" + name + "file");
    fs::remove_all(m_folder / "in");
}

TEST_F(HostileArchiveTest, AttributesThatWaitForTheirFilesAreBounded) {
    std::string folder;
    for (int depth = 0; depth < 15; ++depth) {
        folder += std::string(240, 'f') + "/";
    }
    // Two MiB of paths wait; the file that the last one is for comes when others have passed.
    std::vector<RawMember> members;
    for (int i = 0; i < 700; ++i) {
        members.push_back({folder + "._" + std::to_string(i), kFile, kEmptyAppleDouble});
    }
    members.push_back({folder + "other", kFile, "x"});
    members.push_back({folder + "0", kFile, "x"});
    members.push_back({folder + "699", kFile, "x"});
    writeFile(m_folder / "archive", makeOdc(members));
    KeepingSink sink;
    EXPECT_TRUE(zpk_archive::extract(m_folder / "archive", m_folder / "in", sink));
    ASSERT_FALSE(sink.warnings.empty());
    EXPECT_EQ(sink.warnings.back(), folder +
                                        "699: its extended attributes are kept in the file ._699 (too many "
                                        "wait for their files)");
    EXPECT_FALSE(fs::exists(m_folder / ("in/" + folder + "._0")));
    EXPECT_TRUE(fs::exists(m_folder / ("in/" + folder + "._699")));
}

TEST_F(HostileArchiveTest, AppleDoubleNeverReachesOutside) {
    Outcome outcome = extractMembers({{"l", kLink, "../sentinel"},
                                      {"._l", kFile, kEmptyAppleDouble},
                                      {"._..", kFile, "dots"},
                                      {"._", kFile, "bare"},
                                      {"._.", kFile, "dot"},
                                      {"._text", kFile, "not AppleDouble"}});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(snapshot(m_folder / "in").size(), 6U);
    EXPECT_EQ(readFile(m_folder / "in/._text"), "not AppleDouble");
}

TEST_F(HostileArchiveTest, MemberCutShortLeavesNoHalfFile) {
    std::string whole = makeOdc({{"good", kFile, "good"}, {"half", kFile, std::string(1000, 'h')}});
    writeFile(m_folder / "archive", whole.substr(0, whole.find("hhh") + 500));
    Outcome outcome = extract(m_folder / "archive", m_folder / "in");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_TRUE(outcome.standardError.starts_with("ditto: half: ")) << outcome.standardError;
    EXPECT_EQ(readFile(m_folder / "in/good"), "good");
    EXPECT_FALSE(fs::exists(m_folder / "in/half"));
}

TEST_F(HostileArchiveTest, EndMarkMissing) {
    std::string whole = makeOdc({{"good", kFile, "good"}});
    writeFile(m_folder / "archive", whole.substr(0, whole.size() - 87));
    Outcome outcome = extract(m_folder / "archive", m_folder / "in");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_NE(outcome.standardError.find("ends without its end mark"), std::string::npos);
    EXPECT_EQ(readFile(m_folder / "in/good"), "good");
}

TEST_F(HostileArchiveTest, HeaderInsideAFilesDataIsNoMember) {
    // Were the search for a next header to go on, the archive within the file would be unpacked.
    std::string inner = makeOdc({{"hidden", kFile, "hidden"}});
    std::string whole = makeOdc({{"outer", kFile, inner}, {"last", kFile, "x"}});
    whole.replace(whole.find("outer") - 11, 10, "0000000000");  // The data are no longer announced.
    writeFile(m_folder / "archive", "070707" + std::string(70, 'x') + whole);
    EXPECT_EQ(extract(m_folder / "archive", m_folder / "in").exitStatus, 1);
    EXPECT_FALSE(fs::exists(m_folder / "in/hidden"));
}

TEST_F(HostileArchiveTest, FilesThatAreNoArchives) {
    fs::create_directory(m_folder / "in/folder");
    ASSERT_EQ(mkfifo((m_folder / "in/fifo").c_str(), 0600), 0);
    writeFile(m_folder / "in/empty", "");
    writeFile(m_folder / "in/text", "just text\n");
    writeFile(m_folder / "in/zeros", std::string(5000000, '\0'));
    for (const char* name : {"in/folder", "in/fifo", "in/empty", "in/text", "in/zeros", "in/missing"}) {
        Outcome outcome = extract(m_folder / name, m_folder / "in/out");
        EXPECT_EQ(outcome.exitStatus, 1) << name;
        EXPECT_EQ(std::count(outcome.standardError.begin(), outcome.standardError.end(), '\n'), 1)
            << outcome.standardError;
    }
}

TEST_F(HostileArchiveTest, AnnouncedLengthsCostNoMemory) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer touches memory that the program only asks for";
#endif
    // A name of 100 MB in a small compressed file.
    std::string header = makeNewc({{"n", kFile, ""}}).substr(0, 110);
    header.replace(94, 8, "06000000");
    writeFile(m_folder / "outside2", header + std::string(100000000, 'n'));
    shell("gzip -c '" + (m_folder / "outside2") + "' > '" + (m_folder / "archive") + "'");
    fs::remove(m_folder / "outside2");
    Outcome outcome = extract(m_folder / "archive", m_folder / "in");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_LT(outcome.peakMemory, 64 * 1024);
}

TEST_F(HostileArchiveTest, PermissionsAreExactWhateverTheMaskEvenForNobody) {
    writeFile(m_folder / "archive", makeOdc({{"open", S_IFDIR | 0777},
                                             {"open/file", S_IFREG | 0666, "x"},
                                             {"shut", S_IFDIR | 0555},
                                             {"shut/inner", S_IFDIR | 0111},
                                             {"shut/inner/none", S_IFREG | 0000, "x"},
                                             {"implied/file", S_IFREG | 0777, "x"}}));
    letNobodyIn();
    for (mode_t mask : {mode_t{0}, mode_t{022}, mode_t{0777}}) {
        SCOPED_TRACE(mask);
        std::string target = m_folder / ("in/" + std::to_string(mask));
        fs::create_directory(target);
        chmod(target.c_str(), 0777);
        Outcome outcome = extract(m_folder / "archive", target, [mask] {
            umask(mask);
            becomeNobody();
        });
        EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
        for (const auto& [name, mode] : std::map<std::string, mode_t>{{"open", 0777},
                                                                      {"open/file", 0666},
                                                                      {"shut", 0555},
                                                                      {"shut/inner", 0111},
                                                                      {"shut/inner/none", 0},
                                                                      {"implied/file", 0777}}) {
            struct stat status {};
            EXPECT_EQ(lstat((target + "/" + name).c_str(), &status), 0) << name;
            EXPECT_EQ(status.st_mode & 07777, mode) << name;
        }
        Outcome again = extract(m_folder / "archive", target, becomeNobody);
        EXPECT_EQ(again.exitStatus, 0) << again.standardError;
        for (const char* shut : {"/shut", "/shut/inner"}) {
            EXPECT_EQ(chmod((target + shut).c_str(), 0755), 0);
        }
    }
}

TEST_F(HostileArchiveTest, FolderSwappedForALinkMeanwhileIsNotFollowed) {
    std::vector<RawMember> members;
    for (int i = 0; i < 3000; ++i) {
        members.push_back({"d" + std::to_string(i % 2) + "/file", kFile, "bad"});
    }
    writeFile(m_folder / "archive", makeOdc(members));
    std::string folder = m_folder / "in/d0";
    pid_t swapper = fork();
    if (swapper == 0) {
        for (;;) {
            rename(folder.c_str(), (folder + "-away").c_str());
            if (symlink("../outside", folder.c_str()) == 0) {
                unlink(folder.c_str());
            }
            rename((folder + "-away").c_str(), folder.c_str());
        }
    }
    for (int i = 0; i < 2; ++i) {
        extract(m_folder / "archive", m_folder / "in");
    }
    kill(swapper, SIGKILL);
    waitpid(swapper, nullptr, 0);
}

}  // namespace
