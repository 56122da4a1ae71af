// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/ExtractionCage.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <thread>

#include "Archive/FolderCage.h"
#include "Base/ZPKInstruments.h"
#include "Tests/Archive/HostileArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;
using zpk_archive::ExtractionCage;

int errnoOf(long result) {
    return result < 0 ? errno : 0;
}

/// A folder `in` with a process in it that has entered the cage; beside it things that it may not reach.
class ExtractionCageTest : public HostileArchiveTest {
protected:
    void SetUp() override {
        if (ZPKInstruments::areThere()) {
            GTEST_SKIP() << "an instrumented program does not enter the cage";
        }
        HostileArchiveTest::SetUp();
        fs::create_directories(m_folder / "in/a");
        fs::create_directories(m_folder / "in/b");
        writeFile(m_folder / "in/a/file", "x");
        m_walls = wallsHere();
    }
    void TearDown() override {
        if (!IsSkipped()) {
            HostileArchiveTest::TearDown();
        }
    }

    /// What `step` gives in a process of its own in the cage.
    int inCage(const std::function<int()>& step) {
        const pid_t child = ::fork();
        if (child == 0) {
            ExtractionCage::enter(openedFolder());
            ::_exit(step());
        }
        return statusOf(child);
    }

    ExtractionCage::Walls wallsHere() {
        const pid_t child = ::fork();
        if (child == 0) {
            const ExtractionCage::Walls walls = ExtractionCage::enter(openedFolder());
            ::_exit((walls.folder ? 1 : 0) + (walls.calls ? 2 : 0));
        }
        const int status = statusOf(child);
        return {(status & 1) != 0, (status & 2) != 0};
    }

    int openedFolder() { return ::open((m_folder / "in").c_str(), O_RDONLY | O_DIRECTORY); }

    static int statusOf(pid_t child) {
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    }

    ExtractionCage::Walls m_walls;
};

TEST_F(ExtractionCageTest, TakesAllThatTheKernelOffers) {
    constexpr long kAskForLandlock = 444;
    EXPECT_EQ(m_walls.folder, ::syscall(kAskForLandlock, nullptr, 0, 1) >= 2);
    EXPECT_EQ(m_walls.calls, ::prctl(PR_GET_SECCOMP) >= 0);
}

TEST_F(ExtractionCageTest, NothingOutsideTheFolderIsReached) {
    if (!m_walls.folder) {
        GTEST_SKIP() << "this kernel has no Landlock that allows links between folders";
    }
    const std::string outside = m_folder / "outside";
    const std::string file = outside + "/file";
    const std::string made = outside + "/made";
    const std::string inside = m_folder / "in/a/file";
    struct Row {
        const char* name;
        std::function<long()> call;
        int expected;
    };
    for (const Row& row : std::vector<Row>{
             {"read", [&] { return ::open(file.c_str(), O_RDONLY); }, EACCES},
             {"list", [&] { return ::open(outside.c_str(), O_RDONLY | O_DIRECTORY); }, EACCES},
             {"write", [&] { return ::open(file.c_str(), O_WRONLY); }, EACCES},
             {"truncate", [&] { return ::open(file.c_str(), O_WRONLY | O_TRUNC); }, EACCES},
             {"make", [&] { return ::open(made.c_str(), O_WRONLY | O_CREAT, 0600); }, EACCES},
             {"folder", [&] { return ::mkdirat(AT_FDCWD, made.c_str(), 0700); }, EACCES},
             {"symbolic link", [&] { return ::symlinkat("x", AT_FDCWD, made.c_str()); }, EACCES},
             {"link out", [&] { return ::linkat(AT_FDCWD, inside.c_str(), AT_FDCWD, made.c_str(), 0); },
              EACCES},
             {"link in",
              [&] { return ::linkat(AT_FDCWD, file.c_str(), AT_FDCWD, (m_folder / "in/b/x").c_str(), 0); },
              EXDEV},
             {"remove", [&] { return ::unlinkat(AT_FDCWD, file.c_str(), 0); }, EACCES},
             {"remove folder", [&] { return ::unlinkat(AT_FDCWD, outside.c_str(), AT_REMOVEDIR); }, EACCES},
         }) {
        EXPECT_EQ(inCage([&] { return errnoOf(row.call()); }), row.expected) << row.name;
    }
}

TEST_F(ExtractionCageTest, WallOfTheFolderAloneLetsNothingElseBeMadeInIt) {
    if (!m_walls.folder) {
        GTEST_SKIP() << "this kernel has no Landlock that allows links between folders";
    }
    const std::string made = m_folder / "in/made";
    const auto behindTheWall = [&](mode_t kind) {
        const pid_t child = ::fork();
        if (child == 0) {
            const bool isThere = ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                                 zpk_archive::FolderCage::enter(openedFolder());
            ::_exit(isThere ? errnoOf(::mknodat(AT_FDCWD, made.c_str(), kind | 0600, 0)) : 255);
        }
        return statusOf(child);
    };
    EXPECT_EQ(behindTheWall(S_IFIFO), EACCES);
    EXPECT_EQ(behindTheWall(S_IFSOCK), EACCES);
    EXPECT_EQ(behindTheWall(S_IFREG), 0);
}

TEST_F(ExtractionCageTest, AllThatUnpackingTakesIsThereInTheFolder) {
    const std::string in = m_folder / "in";
    struct Row {
        const char* name;
        std::function<long()> call;
    };
    for (const Row& row : std::vector<Row>{
             {"make", [&] { return ::openat(AT_FDCWD, (in + "/new").c_str(), O_WRONLY | O_CREAT, 0600); }},
             {"truncate",
              [&] {
                  const int file = ::openat(AT_FDCWD, (in + "/new").c_str(), O_WRONLY);
                  return ::ftruncate(file, 100);
              }},
             {"folder", [&] { return ::mkdirat(AT_FDCWD, (in + "/made").c_str(), 0700); }},
             {"symbolic link", [&] { return ::symlinkat("/", AT_FDCWD, (in + "/made/link").c_str()); }},
             {"link between folders",
              [&] {
                  return ::linkat(AT_FDCWD, (in + "/a/file").c_str(), AT_FDCWD, (in + "/b/file").c_str(), 0);
              }},
             {"mode", [&] { return ::chmod((in + "/a/file").c_str(), 0640); }},
             {"remove", [&] { return ::unlinkat(AT_FDCWD, (in + "/a/file").c_str(), 0); }},
             {"list", [&] { return ::openat(AT_FDCWD, in.c_str(), O_RDONLY | O_DIRECTORY); }},
             {"thread",
              [] {
                  std::thread([] {}).join();
                  return 0;
              }},
         }) {
        EXPECT_EQ(inCage([&] { return errnoOf(row.call()); }), 0) << row.name;
    }
}

TEST_F(ExtractionCageTest, NoCallThatUnpackingDoesNotTakeIsLeft) {
    if (!m_walls.calls) {
        GTEST_SKIP() << "this kernel has no filter of system calls";
    }
    char program[] = "/bin/true";
    char* const arguments[] = {program, nullptr};
    struct Row {
        const char* name;
        std::function<long()> call;
    };
    for (const Row& row : std::vector<Row>{
             {"network", [] { return ::socket(AF_INET, SOCK_STREAM, 0); }},
             {"local socket", [] { return ::socket(AF_UNIX, SOCK_STREAM, 0); }},
             {"program", [&] { return ::execve(program, arguments, nullptr); }},
             {"process", [] { return ::fork(); }},
             {"process, as the C library does not", [] { return ::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0); }},
             {"another's memory", [] { return ::ptrace(PTRACE_ATTACH, 1, nullptr, nullptr); }},
             {"mount", [&] { return ::mount("none", (m_folder / "in").c_str(), "tmpfs", 0, nullptr); }},
             {"namespace", [] { return ::unshare(CLONE_NEWUSER); }},
             {"signal", [] { return ::kill(::getppid(), 0); }},
             {"signal to a thread", [] { return ::syscall(SYS_tgkill, ::getppid(), ::getppid(), 0); }},
             {"memory to execute",
              [] {
                  void* const got =
                      ::mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                  return got == MAP_FAILED ? -1 : 0;
              }},
             {"memory made to execute",
              [] {
                  void* const got =
                      ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                  return got == MAP_FAILED ? 0 : ::mprotect(got, 4096, PROT_READ | PROT_EXEC);
              }},
             {"more memory",
              [] {
                  const rlimit more{RLIM_INFINITY, RLIM_INFINITY};
                  return ::setrlimit(RLIMIT_DATA, &more);
              }},
             {"device", [&] { return ::mknodat(AT_FDCWD, (m_folder / "in/null").c_str(), S_IFCHR, 0x103); }},
             {"owner", [&] { return ::fchownat(AT_FDCWD, (m_folder / "in/a").c_str(), 1, 1, 0); }},
         }) {
        EXPECT_EQ(inCage([&] { return errnoOf(row.call()); }), EPERM) << row.name;
    }
}

TEST_F(ExtractionCageTest, MemoryAndDescriptorsAreBounded) {
    EXPECT_EQ(inCage([] {
                  rlimit limit{};
                  const bool isBounded = ::getrlimit(RLIMIT_DATA, &limit) == 0 && limit.rlim_max <= 512U
                                                                                                        << 20;
                  return isBounded ? 0 : errno;
              }),
              m_walls.calls ? EPERM : 0);
    EXPECT_EQ(inCage([] {
                  void* const got = ::mmap(nullptr, std::size_t{600} << 20, PROT_READ | PROT_WRITE,
                                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                  return got == MAP_FAILED ? errno : 0;
              }),
              ENOMEM);
}

/// Lets the system calls from the first to the last one fail, in the way of a kernel without them.
void failCalls(std::uint32_t first, std::uint32_t last, int error) {
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, first, 0, 2),
        BPF_JUMP(BPF_JMP | BPF_JGT | BPF_K, last, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{sizeof(steps) / sizeof(steps[0]), steps};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        ::_exit(126);
    }
}

TEST_F(ExtractionCageTest, WithoutLandlockOrFiltersUnpackingGoesOn) {
    writeFile(m_folder / "archive", makeOdc({{"d/one", kFile, "x", 7, 2}, {"e/two", kFile, "x", 7, 2}}));
    struct Row {
        const char* name;
        std::uint32_t first;
        std::uint32_t last;
        int error;
    };
    for (const Row& row :
         {Row{"an old kernel", 444, 446, ENOSYS}, Row{"Landlock switched off", 444, 446, EOPNOTSUPP},
          Row{"in a sandbox", 444, 446, EPERM}, Row{"Landlock's rules are full", 446, 446, E2BIG},
          Row{"no filters", SYS_seccomp, SYS_seccomp, ENOSYS}}) {
        SCOPED_TRACE(row.name);
        fs::remove_all(m_folder / "in");
        const Outcome outcome = extract(m_folder / "archive", m_folder / "in",
                                        [&row] { failCalls(row.first, row.last, row.error); });
        EXPECT_EQ(outcome.exitStatus, 0);
        EXPECT_EQ(outcome.standardError, "");
        EXPECT_TRUE(fs::equivalent(m_folder / "in/d/one", m_folder / "in/e/two"));
    }
}

TEST_F(ExtractionCageTest, KernelStopsWhatACarelessPathCheckLetsThrough) {
    if (!m_walls.folder) {
        GTEST_SKIP() << "this kernel has no Landlock that allows links between folders";
    }
    writeFile(m_folder / "archive", makeOdc({{"../escaped", kFile, "bad"},
                                             {"../outside/file", kFile, "bad"},
                                             {"../outside/folder", kFolder},
                                             {"a/../../outside/link", kLink, "bad"},
                                             {"good", kFile, "good"}}));
    const Outcome caged = runProgram({ZPK_CARELESS_DITTO, "caged", m_folder / "archive", m_folder / "in"});
    EXPECT_EQ(caged.exitStatus, 1);
    EXPECT_EQ(caged.standardError,
              "../escaped: Permission denied\n../outside/file: Permission denied\n"
              "../outside/folder: Permission denied\na/../../outside/link: Permission denied\n");
    EXPECT_EQ(readFile(m_folder / "in/good"), "good");
    EXPECT_EQ(neighbours(), m_before);
    // Outside the cage the same program does all of it, so it was the kernel that stopped it.
    const Outcome free = runProgram({ZPK_CARELESS_DITTO, "free", m_folder / "archive", m_folder / "in"});
    EXPECT_EQ(free.exitStatus, 0) << free.standardError;
    EXPECT_EQ(readFile(m_folder / "escaped"), "bad");
    EXPECT_EQ(readFile(m_folder / "outside/file"), "bad");
    EXPECT_TRUE(fs::is_symlink(m_folder / "outside/link"));
    m_before = neighbours();
}

TEST_F(ExtractionCageTest, IsEnteredBeforeTheFirstByteAndTheFirstThread) {
    if (!m_walls.calls || !hasProgram("strace")) {
        GTEST_SKIP() << "no filter of system calls, or no strace";
    }
    writeFile(m_folder / "archive", makeOdc({{"good", kFile, "good"}}));
    const std::string trace = m_folder / "in/trace";
    const Outcome outcome = runProgram({"strace", "-f", "-y", "-o", trace, ZPK_DITTO, "-x", "-z", "--rsrc",
                                        m_folder / "archive", m_folder / "in/out"});
    if (outcome.exitStatus != 0) {
        GTEST_SKIP() << "processes cannot be traced here";
    }
    const std::string calls = readFile(trace);
    const std::size_t entered = calls.find("seccomp(SECCOMP_SET_MODE_FILTER");
    ASSERT_NE(entered, std::string::npos);
    const std::size_t firstByte = calls.find("/archive>, \"0707");
    ASSERT_NE(firstByte, std::string::npos);
    EXPECT_LT(entered, firstByte);
    EXPECT_LT(entered, calls.find(" clone"));
    EXPECT_LT(calls.find("prctl(PR_SET_NO_NEW_PRIVS, 1"), entered);
}

}  // namespace
