// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/ChildStep.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFileDescriptor.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

/// The child's whole answer when all went well; otherwise a message.
constexpr char kDone[] = "\n";
constexpr std::size_t kAnswerLimit = std::size_t{1} << 20;

std::string answerOf(const std::function<void()>& step) {
    try {
        step();
        return kDone;
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

[[noreturn]] void runInChild(pid_t parent, int answer, const std::function<void()>& step) {
    // Nobody would put in place what an orphan makes.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(EXIT_FAILURE);
    }
    // Too large a file is a failure with a cause, like a full disk.
    ::signal(SIGXFSZ, SIG_IGN);
    const bool isTold = ZPKDescriptorIO::writeWhole(answer, answerOf(step));
    ::_exit(isTold ? EXIT_SUCCESS : EXIT_FAILURE);
}

/// What the child answers up to its end; nothing when a signal comes first.
std::optional<std::string> waitForAnswer(int answer, const SignalHold& signals) {
    std::array<pollfd, 2> events{pollfd{answer, POLLIN, 0}, pollfd{signals.descriptor(), POLLIN, 0}};
    if (ZPKDescriptorIO::retry([&] { return ::poll(events.data(), events.size(), -1); }) < 0) {
        return std::nullopt;
    }
    return events[1].revents != 0 ? std::nullopt : ZPKDescriptorIO::readToEnd(answer, kAnswerLimit);
}

/// Waits for the child's end; its wait status.
int reap(pid_t child) {
    int status = 0;
    ZPKDescriptorIO::retry([&] { return ::waitpid(child, &status, 0); });
    return status;
}

std::string endOf(int status) {
    const std::string subject = "the process that packs ended before its time";
    return WIFSIGNALED(status) ? subject + ": " + ::strsignal(WTERMSIG(status)) : subject;
}

}  // namespace

void ChildStep::run(const SignalHold& signals, const std::function<void()>& step) {
    std::array<int, 2> ends;
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw PackagerFailure::ofSystem("pipe", errno);
    }
    const ZPKFileDescriptor reading(ends[0]);
    ZPKFileDescriptor writing(ends[1]);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        throw PackagerFailure::ofSystem("fork", errno);
    }
    if (child == 0) {
        runInChild(parent, writing.get(), step);
    }
    static_cast<void>(writing.close());
    const std::optional<std::string> answer = waitForAnswer(reading.get(), signals);
    if (!answer) {
        ::kill(child, SIGKILL);
    }
    const int status = reap(child);
    if (!answer) {
        throw PackagerFailure("interrupted");
    }
    if (*answer != kDone) {
        throw PackagerFailure(answer->empty() ? endOf(status) : *answer);
    }
}

}  // namespace zpk_packager
