// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKDescriptorIO.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <thread>

#include "Base/ZPKFileDescriptor.h"
#include "Tests/Support/Pattern.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

std::atomic<bool> writesTakeNothing = false;

}  // namespace

// In place of the C library's, which has no way to be told to take nothing.
extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t size) {
    return writesTakeNothing ? 0 : ::syscall(SYS_write, descriptor, bytes, size);
}

namespace {

using zpk_test::pattern;
using zpk_test::readFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

struct Pipe {
    Pipe() {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        readEnd = ZPKFileDescriptor(ends[0]);
        writeEnd = ZPKFileDescriptor(ends[1]);
    }
    ZPKFileDescriptor readEnd;
    ZPKFileDescriptor writeEnd;
};

std::atomic<int> alarmCount = 0;

/// Interrupts the calls of this thread, and of those that begin later without blocking the signal,
/// a thousand times a second.
class Interruptions {
public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) { ++alarmCount; };
        ::sigaction(SIGALRM, &action, &m_before);
        const itimerval often{{0, 1000}, {0, 1000}};
        ::setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~Interruptions() {
        const itimerval never{};
        ::setitimer(ITIMER_REAL, &never, nullptr);
        ::sigaction(SIGALRM, &m_before, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

private:
    struct sigaction m_before;
};

/// A thread that the signals pass by.
template <typename Action>
std::thread undisturbed(Action action) {
    return std::thread([action] {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        action();
    });
}

void pause(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

class ZPKDescriptorIOInterruptedTest : public ::testing::Test {
protected:
    /// Without it these tests would show nothing.
    void expectInterruptions() {
        char byte;
        EXPECT_EQ(::read(m_pipe.readEnd.get(), &byte, 1), -1);
        EXPECT_EQ(errno, EINTR);
        alarmCount = 0;
    }

    Pipe m_pipe;
    Interruptions m_interruptions;
};

TEST_F(ZPKDescriptorIOInterruptedTest, ReadSomeWaitsOn) {
    expectInterruptions();
    std::thread writer = undisturbed([this] {
        pause(50);
        EXPECT_EQ(::write(m_pipe.writeEnd.get(), "abc", 3), 3);
    });
    char bytes[8];
    EXPECT_EQ(ZPKDescriptorIO::readSome(m_pipe.readEnd.get(), bytes, sizeof(bytes)), 3);
    EXPECT_GT(alarmCount, 0);
    writer.join();
}

TEST_F(ZPKDescriptorIOInterruptedTest, ReadWholeWaitsForAllPieces) {
    expectInterruptions();
    const std::string sent = pattern(20'000);
    std::thread writer = undisturbed([&] {
        for (std::size_t at = 0; at < sent.size(); at += 1000) {
            pause(3);
            EXPECT_EQ(::write(m_pipe.writeEnd.get(), sent.data() + at, 1000), 1000);
        }
    });
    std::string received(sent.size(), '\0');
    EXPECT_EQ(ZPKDescriptorIO::readWhole(m_pipe.readEnd.get(), received.data(), received.size()), 20'000);
    EXPECT_EQ(received, sent);
    EXPECT_GT(alarmCount, 0);
    writer.join();
}

TEST_F(ZPKDescriptorIOInterruptedTest, ReadToEndWaitsForTheEnd) {
    expectInterruptions();
    const std::string sent = pattern(60'000);
    std::thread writer = undisturbed([&] {
        for (std::size_t at = 0; at < sent.size(); at += 3000) {
            pause(3);
            EXPECT_EQ(::write(m_pipe.writeEnd.get(), sent.data() + at, 3000), 3000);
        }
        EXPECT_TRUE(m_pipe.writeEnd.close());
    });
    EXPECT_EQ(ZPKDescriptorIO::readToEnd(m_pipe.readEnd.get(), 60'000), sent);
    EXPECT_GT(alarmCount, 0);
    writer.join();
}

TEST_F(ZPKDescriptorIOInterruptedTest, WriteWholeWritesAllPieces) {
    expectInterruptions();
    const std::string sent = pattern(1'000'000);
    std::string received;
    std::thread reader = undisturbed([&] {
        std::string piece(50'000, '\0');
        for (ssize_t count; (count = ::read(m_pipe.readEnd.get(), piece.data(), piece.size())) > 0;) {
            received.append(piece, 0, static_cast<std::size_t>(count));
            pause(3);
        }
    });
    EXPECT_TRUE(ZPKDescriptorIO::writeWhole(m_pipe.writeEnd.get(), sent));
    EXPECT_GT(alarmCount, 0);
    EXPECT_TRUE(m_pipe.writeEnd.close());
    reader.join();
    EXPECT_EQ(received, sent);
}

TEST(ZPKDescriptorIOTest, RetryGoesOnAfterInterruptionsAlone) {
    int calls = 0;
    EXPECT_EQ(ZPKDescriptorIO::retry([&] {
                  errno = EINTR;
                  return ++calls < 5 ? -1 : 7;
              }),
              7);
    EXPECT_EQ(calls, 5);
    calls = 0;
    EXPECT_EQ(ZPKDescriptorIO::retry([&] {
                  ++calls;
                  errno = EAGAIN;
                  return -1;
              }),
              -1);
    EXPECT_EQ(calls, 1);
}

TEST(ZPKDescriptorIOTest, ReadWholeGivesLessAtTheEndOnly) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "1234567");
    const ZPKFileDescriptor file(::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC));
    char bytes[8] = {};
    EXPECT_EQ(ZPKDescriptorIO::readWhole(file.get(), bytes, 5), 5);
    EXPECT_EQ(ZPKDescriptorIO::readWhole(file.get(), bytes, 5), 2);
    EXPECT_EQ(ZPKDescriptorIO::readWhole(file.get(), bytes, 5), 0);
    EXPECT_EQ(ZPKDescriptorIO::readWhole(file.get(), bytes, 0), 0);
    EXPECT_EQ(std::string(bytes), "67345");
}

TEST(ZPKDescriptorIOTest, ReadWholeAtLeavesThePositionAlone) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "1234567");
    const ZPKFileDescriptor file(::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC));
    char bytes[8] = {};
    EXPECT_EQ(ZPKDescriptorIO::readWholeAt(file.get(), bytes, 8, 4), 3);
    EXPECT_STREQ(bytes, "567");
    EXPECT_EQ(ZPKDescriptorIO::readWholeAt(file.get(), bytes, 8, 7), 0);
    EXPECT_EQ(::lseek(file.get(), 0, SEEK_CUR), 0);
}

TEST(ZPKDescriptorIOTest, FailuresLeaveTheirCause) {
    const ZPKFileDescriptor folder(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    char byte = 0;
    for (const ssize_t count : {ZPKDescriptorIO::readSome(folder.get(), &byte, 1),
                                ZPKDescriptorIO::readWhole(folder.get(), &byte, 1),
                                ZPKDescriptorIO::readWholeAt(folder.get(), &byte, 1, 0)}) {
        EXPECT_EQ(count, -1);
        EXPECT_EQ(errno, EISDIR);
    }
    EXPECT_FALSE(ZPKDescriptorIO::readToEnd(folder.get(), 10));
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(ZPKDescriptorIO::writeWhole(folder.get(), "x"));
    EXPECT_EQ(errno, EBADF);
}

TEST(ZPKDescriptorIOTest, ReadToEndHasALimit) {
    const TemporaryFolder folder;
    for (const std::size_t size : {0u, 1u, 16'383u, 16'384u, 16'385u, 49'152u, 100'000u}) {
        const std::string contents = pattern(size);
        writeFile(folder / "file", contents);
        for (const std::size_t limit : {size, size + 1, size + 100'000, SIZE_MAX}) {
            const ZPKFileDescriptor file(::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC));
            EXPECT_EQ(ZPKDescriptorIO::readToEnd(file.get(), limit), contents) << size << " of " << limit;
        }
        if (size > 0) {
            const ZPKFileDescriptor file(::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC));
            errno = 0;
            EXPECT_EQ(ZPKDescriptorIO::readToEnd(file.get(), size - 1), std::nullopt) << size;
            EXPECT_EQ(errno, EFBIG);
        }
    }
}

TEST(ZPKDescriptorIOTest, ReadToEndOfWhatNeverEndsStopsAtItsLimit) {
    const ZPKFileDescriptor zeros(::open("/dev/zero", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(ZPKDescriptorIO::readToEnd(zeros.get(), 1'000'000), std::nullopt);
    EXPECT_EQ(errno, EFBIG);
}

TEST(ZPKDescriptorIOTest, WritesAtAnOffsetLeaveThePositionAlone) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "123");
    const ZPKFileDescriptor file(::open((folder / "file").c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_TRUE(ZPKDescriptorIO::writeWholeAt(file.get(), "abc", 3, 2));
    EXPECT_TRUE(ZPKDescriptorIO::writeWhole(file.get(), "x"));
    EXPECT_TRUE(ZPKDescriptorIO::writeWhole(file.get(), ""));
    EXPECT_EQ(readFile(folder / "file"), "x2abc");
}

TEST(ZPKDescriptorIOTest, WriteThatTakesNothingIsAFullDisk) {
    const ZPKFileDescriptor null(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    writesTakeNothing = true;
    errno = 0;
    const bool isWritten = ZPKDescriptorIO::writeWhole(null.get(), "abc");
    const int error = errno;
    writesTakeNothing = false;
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(error, ENOSPC);
}

TEST(ZPKDescriptorIOTest, FullDeviceIsTold) {
    const ZPKFileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_FALSE(ZPKDescriptorIO::writeWhole(full.get(), "abc"));
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_FALSE(ZPKDescriptorIO::writeWholeAt(full.get(), "abc", 3, 0));
    EXPECT_EQ(errno, ENOSPC);
}

TEST(ZPKDescriptorIOTest, DiskThatFillsUpHalfwayIsTold) {
    const TemporaryFolder folder;
    if (::mount("none", folder.path().c_str(), "tmpfs", 0, "size=65536") != 0) {
        GTEST_SKIP() << "may not mount";
    }
    {
        const ZPKFileDescriptor file(::open((folder / "file").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
        EXPECT_FALSE(ZPKDescriptorIO::writeWhole(file.get(), pattern(100'000)));
        EXPECT_EQ(errno, ENOSPC);
        EXPECT_GT(::lseek(file.get(), 0, SEEK_CUR), 0) << "what fits is written";
    }
    ::umount(folder.path().c_str());
}

}  // namespace
