// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKTask.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <csignal>
#include <string_view>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKEnvironment.h"
#include "Platform/ZPKHeldFolder.h"
#include "Platform/ZPKIgnoredSignals.h"
#include "Platform/ZPKLaunchFailure.h"

namespace {

constexpr int kFirstDescriptorAfterStandardStreams = 3;

/// What `posix_spawn` is told, released at the end of the scope.
class SpawnPlan {
public:
    SpawnPlan() {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawnattr_init(&m_attributes);
    }
    ~SpawnPlan() {
        ::posix_spawnattr_destroy(&m_attributes);
        ::posix_spawn_file_actions_destroy(&m_actions);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;

    /// 0 or an errno value. `standardError` is -1 for the inherited stream.
    int prepare(int standardError);

    int spawn(pid_t& outChild, const std::string& path, const std::vector<std::string>& arguments,
              char* const* environment) const;

private:
    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
};

int SpawnPlan::prepare(int standardError) {
    if (standardError >= 0) {
        if (const int error = ::posix_spawn_file_actions_adddup2(&m_actions, standardError, STDERR_FILENO)) {
            return error;
        }
    }
    if (const int error =
            ::posix_spawn_file_actions_addclosefrom_np(&m_actions, kFirstDescriptorAfterStandardStreams)) {
        return error;
    }
    sigset_t none;
    ::sigemptyset(&none);
    const sigset_t own = ZPKIgnoredSignals::own();
    ::posix_spawnattr_setsigmask(&m_attributes, &none);
    ::posix_spawnattr_setsigdefault(&m_attributes, &own);
    return ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

int SpawnPlan::spawn(pid_t& outChild, const std::string& path, const std::vector<std::string>& arguments,
                     char* const* environment) const {
    // The interface wants writable texts; the copies live until the child has its own.
    std::vector<std::string> texts;
    texts.reserve(arguments.size() + 1);
    texts.push_back(path);
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> vector;
    vector.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        vector.push_back(text.data());
    }
    vector.push_back(nullptr);
    return ::posix_spawn(&outChild, path.c_str(), &m_actions, &m_attributes, vector.data(), environment);
}

/// Both with the `=` behind the name.
bool haveOneName(std::string_view entry, std::string_view other) {
    return other.starts_with(entry.substr(0, entry.find('=') + 1));
}

/// What the environment `given` holds, in its order, but for what has the name of one of `entries`, and then
/// those.
std::vector<char*> withEntries(char** given, std::vector<std::string>& entries) {
    std::vector<char*> all;
    for (; *given != nullptr; ++given) {
        if (std::ranges::none_of(entries, [&](const auto& entry) { return haveOneName(entry, *given); })) {
            all.push_back(*given);
        }
    }
    for (std::string& entry : entries) {
        all.push_back(entry.data());
    }
    all.push_back(nullptr);
    return all;
}

}  // namespace

ZPKTask::~ZPKTask() = default;

ZPKResult<ZPKFileDescriptor> ZPKTask::openUnreadPipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return ZPKFailure::ofSystem(m_launchPath, errno);
    }
    m_pipeReadEnd = ZPKFileDescriptor(ends[0]);
    return ZPKFileDescriptor(ends[1]);
}

ZPKOutcome ZPKTask::launch() {
    ZPKFileDescriptor writeEnd;
    if (m_unreadStandardError) {
        ZPKResult<ZPKFileDescriptor> opened = openUnreadPipe();
        if (!opened) {
            return opened.failure();
        }
        writeEnd = std::move(*opened);
    }
    if (!ZPKHeldFolder::isToBeFoundAt(m_launchPath)) {
        return ZPKFailure(m_launchPath, "Its folder is no longer in its place");
    }
    std::vector<std::string> entries = m_entries;
    if (m_endsWithItsParent) {
        entries.push_back(std::string(kParentVariable) + "=" + std::to_string(::getpid()));
    }
    const std::vector<char*> environment = withEntries(ZPKEnvironment::ofChildren(), entries);
    SpawnPlan plan;
    int error = plan.prepare(writeEnd.get());
    const ZPKMutexLock lock(m_mutex);
    assert(m_child == -1);
    if (m_isTerminated) {
        error = ECANCELED;
    }
    pid_t child = -1;
    if (error == 0) {
        error = plan.spawn(child, m_launchPath, m_arguments, environment.data());
    }
    if (error != 0) {
        return ZPKLaunchFailure::explain(m_launchPath, error);
    }
    m_child = child;
    return {};
}

void ZPKTask::terminate() {
    const ZPKMutexLock lock(m_mutex);
    m_isTerminated = true;
    if (m_child > 0) {
        ::kill(m_child, SIGKILL);
    }
}

pid_t ZPKTask::runningChild() {
    const ZPKMutexLock lock(m_mutex);
    return m_child;
}

void ZPKTask::waitUntilExit() {
    const pid_t child = runningChild();
    if (child < 0) {
        return;
    }
    // First without burying it: until that is done under the lock, its number stays its own.
    siginfo_t ended;
    ZPKDescriptorIO::retry(
        [&] { return ::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT); });
    const ZPKMutexLock lock(m_mutex);
    int status = 0;
    const pid_t waited = ZPKDescriptorIO::retry([&] { return ::waitpid(child, &status, 0); });
    m_child = -1;
    if (waited == child) {
        m_terminationSignal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        m_terminationStatus = WIFSIGNALED(status) ? 128 + m_terminationSignal : WEXITSTATUS(status);
    }
}
