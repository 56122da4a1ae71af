// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKMutex.h"
#include "Base/ZPKParentProcess.h"

/// A child process, started directly (no shell). It inherits the environment (as
/// `ZPKEnvironment::ofChildren` gives it), the working folder and the standard streams; every other
/// descriptor of this process is closed in it. It blocks no signal, and ignores those that the person had
/// this process ignore. A child that nobody waited for outlives the task. One thread uses one task;
/// `terminate` may be called from another.
class ZPKTask {
public:
    /// In a child's environment, the process number of the parent that it is to end with.
    static constexpr const char* kParentVariable = ZPKParentProcess::kVariable;

    ZPKTask() = default;
    ~ZPKTask();
    ZPKTask(const ZPKTask&) = delete;
    ZPKTask& operator=(const ZPKTask&) = delete;

    void setLaunchPath(const std::string& path) { m_launchPath = path; }

    /// The arguments after the program's own name.
    void setArguments(const std::vector<std::string>& arguments) { m_arguments = arguments; }

    /// `NAME=value` each, besides what the environment holds or in the stead of what has the same name there.
    void setEnvironmentEntries(const std::vector<std::string>& entries) { m_entries = entries; }

    /// Sends the child's standard error into a pipe that nobody reads. The pipe stays open until
    /// the task is destroyed, so that a child that writes little is neither blocked nor killed.
    void setStandardErrorToUnreadPipe() { m_unreadStandardError = true; }

    /// Tells the child by `kParentVariable` to end when the thread that launches it does, however that ends.
    void setEndsWithItsParent() { m_endsWithItsParent = true; }

    /// Starts the child; the one before must have been waited for. The failure names the launch path, and
    /// as `ZPKLaunchFailure` does what keeps that program from running. Nothing is started by the path of a
    /// held folder that is no longer in its place.
    ZPKOutcome launch() ZPK_EXCLUDES(m_mutex);

    /// Blocks until the child has exited; returns at once when none runs.
    void waitUntilExit() ZPK_EXCLUDES(m_mutex);

    /// Ends the child, if one runs, in a way that it cannot refuse (SIGKILL); from now on `launch` fails,
    /// with the system's text for ECANCELED as its reason. Whoever waits for the child goes on. Any thread,
    /// as long as the task is there.
    void terminate() ZPK_EXCLUDES(m_mutex);

    /// Exit status of the child, or 128 plus the signal's number. Meaningful after `waitUntilExit`.
    int terminationStatus() const { return m_terminationStatus; }

    /// The signal that ended the child, or 0 when it has exited. Meaningful after `waitUntilExit`.
    int terminationSignal() const { return m_terminationSignal; }

private:
    pid_t runningChild() ZPK_EXCLUDES(m_mutex);
    ZPKResult<ZPKFileDescriptor> openUnreadPipe();

    std::string m_launchPath;
    std::vector<std::string> m_arguments;
    std::vector<std::string> m_entries;
    bool m_unreadStandardError = false;
    bool m_endsWithItsParent = false;
    /// Held while a child begins or is buried, so that no signal reaches a process of another's.
    ZPKMutex m_mutex;
    pid_t m_child ZPK_GUARDED_BY(m_mutex) = -1;
    bool m_isTerminated ZPK_GUARDED_BY(m_mutex) = false;
    ZPKFileDescriptor m_pipeReadEnd;
    int m_terminationStatus = 0;
    int m_terminationSignal = 0;
};
