// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// A program under trace with every process and thread that comes of it, one of whose system calls fails.
/// The calls of all of them are counted together, as long as what they run lies in one folder: what that
/// starts from elsewhere runs undisturbed.
class TracedRun {
public:
    /// Which call fails, and how: the `number`th `call`, from 1 on, with `error` from errno.
    struct Fault {
        int call = -1;
        int error = 0;
        int number = 0;
    };

    struct Death {
        std::string program;
        int signal = 0;
        /// Whether it was still the loader's: no program's first line was reached.
        bool wasLoading = false;
    };

    /// What was seen.
    struct Report {
        /// By the calls' numbers; of the faulty one alone where there is a fault.
        std::map<int, int> counts;
        /// Whose call failed, as a path.
        std::optional<std::string> struck;
        /// The program's exit status, or 128 plus the signal's number.
        int status = -1;
        /// Whatever was ended by a signal.
        std::vector<Death> deaths;
        /// The programs of processes that were still there long after the first one's end.
        std::vector<std::string> orphans;
        bool hasHung = false;
        bool wasAsked = false;
    };

    /// In seconds; long ones, since a busy machine is no fault.
    struct Patience {
        /// A program that waits for a person is asked to end (SIGTERM); 0 when it is not to be.
        int untilAsked = 0;
        /// What has not ended by then is killed; it counts anew from the program's own end on.
        int untilKilled = 0;
    };

    /// Counts every kind of call without a fault.
    TracedRun(std::string folder, std::optional<Fault> fault) : m_folder(std::move(folder)), m_fault(fault) {}

    /// Runs the program to its end, and all that it has started. Once only; throws std::system_error when
    /// there is nothing to trace.
    Report run(char* const* program, const Patience& patience);

private:
    struct Task {
        std::string program;
        bool isThread = false;
        /// A task may stop, and even end, before its parent tells of it.
        bool isTold = false;
        /// From the program's start to its first signal handler, which a loader has none of.
        bool isLoading = true;
    };

    void start(char* const* program);
    [[noreturn]] void becomeProgram(int gate, char* const* program) const;
    void loadFilter() const;
    void follow(const Patience& patience);
    void takeStop(pid_t task, int status);
    void takeEvent(pid_t task, int event);
    void takeNewTask(pid_t parent, bool isThread);
    void takeCall(pid_t task);
    void takeEnd(pid_t task, int status);
    void giveUp();
    bool isCounted(pid_t task);

    std::string m_folder;
    std::optional<Fault> m_fault;
    pid_t m_first = -1;
    bool m_firstHasEnded = false;
    std::map<pid_t, Task> m_tasks;
    std::set<pid_t> m_endedUntold;
    Report m_report;
};
