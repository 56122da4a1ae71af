// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Faults/TracedRun.h"

#include <fcntl.h>
#include <seccomp.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Base/ZPKFileDescriptor.h"

namespace {

/// Where a thread takes a number, and a pointer or a number, with the call's meaning.
long trace(__ptrace_request request, pid_t task, unsigned long data = 0, void* address = nullptr) {
    // A task that was killed meanwhile is told of by its end.
    return ::ptrace(request, task, address, data);
}

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

std::string programOf(pid_t task) {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/" + std::to_string(task) + "/exe", ignored);
}

/// Sets a signal handler, which each of the programs does and no loader.
constexpr int kFirstOfProgram = SYS_rt_sigaction;

volatile std::sig_atomic_t g_seconds = 0;

/// Each second anew, so that no wait goes on unseen.
void startClock() {
    struct sigaction action {};
    action.sa_handler = [](int) { g_seconds = g_seconds + 1; };
    ::sigaction(SIGALRM, &action, nullptr);
    const itimerval timer{{1, 0}, {1, 0}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

TracedRun::Report TracedRun::run(char* const* program, const Patience& patience) {
    start(program);
    startClock();
    follow(patience);
    return std::move(m_report);
}

void TracedRun::start(char* const* program) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        fail("pipe2");
    }
    const ZPKFileDescriptor reading(ends[0]);
    ZPKFileDescriptor writing(ends[1]);
    m_first = ::fork();
    if (m_first < 0) {
        fail("fork");
    }
    if (m_first == 0) {
        static_cast<void>(writing.close());
        becomeProgram(reading.get(), program);
    }
    m_tasks[m_first].isTold = true;
    constexpr unsigned long kOptions = PTRACE_O_EXITKILL | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                                       PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_TRACESECCOMP;
    if (trace(PTRACE_SEIZE, m_first, kOptions) != 0) {
        fail("PTRACE_SEIZE");
    }
}

void TracedRun::becomeProgram(int gate, char* const* program) const {
    char byte = 0;
    static_cast<void>(::read(gate, &byte, 1));
    loadFilter();
    ::execv(program[0], program);
    constexpr int kNotFound = 127;
    ::_exit(kNotFound);
}

/// The calls that are to be counted stop, and no other.
void TracedRun::loadFilter() const {
    const scmp_filter_ctx filter = ::seccomp_init(m_fault ? SCMP_ACT_ALLOW : SCMP_ACT_TRACE(0));
    if (m_fault) {
        ::seccomp_rule_add(filter, SCMP_ACT_TRACE(0), m_fault->call, 0);
        ::seccomp_rule_add(filter, SCMP_ACT_TRACE(0), kFirstOfProgram, 0);
    }
    if (filter == nullptr || ::seccomp_load(filter) != 0) {
        ::_exit(EXIT_FAILURE);
    }
}

void TracedRun::follow(const Patience& patience) {
    while (!m_tasks.empty()) {
        int status = 0;
        const pid_t task = ::waitpid(-1, &status, __WALL);
        if (task > 0 && WIFSTOPPED(status)) {
            takeStop(task, status);
        } else if (task > 0) {
            takeEnd(task, status);
        } else if (errno != EINTR) {
            fail("waitpid");
        }
        if (patience.untilAsked != 0 && g_seconds >= patience.untilAsked && !m_report.wasAsked &&
            !m_firstHasEnded) {
            m_report.wasAsked = true;
            ::kill(m_first, SIGTERM);
        }
        if (g_seconds >= patience.untilKilled) {
            giveUp();
        }
    }
}

/// What is still there counts as hung before the program's end, and as left behind after it.
void TracedRun::giveUp() {
    m_report.hasHung = m_report.hasHung || !m_firstHasEnded;
    for (const auto& [task, known] : m_tasks) {
        if (m_firstHasEnded && !known.isThread) {
            m_report.orphans.push_back(programOf(task));
        }
        ::kill(task, SIGKILL);
    }
}

void TracedRun::takeStop(pid_t task, int status) {
    // A new task may stop before its parent tells of it.
    m_tasks[task];
    const int signal = WSTOPSIG(status);
    const int event = status >> 16;
    if (event == 0) {
        trace(PTRACE_CONT, task, static_cast<unsigned long>(signal));
    } else if (event == PTRACE_EVENT_STOP && signal != SIGTRAP) {
        trace(PTRACE_LISTEN, task);
    } else {
        takeEvent(task, event);
        trace(PTRACE_CONT, task);
    }
}

void TracedRun::takeEvent(pid_t task, int event) {
    switch (event) {
        case PTRACE_EVENT_FORK:
        case PTRACE_EVENT_VFORK:
            takeNewTask(task, false);
            break;
        case PTRACE_EVENT_CLONE:
            takeNewTask(task, true);
            break;
        case PTRACE_EVENT_EXEC:
            m_tasks[task].program = programOf(task);
            m_tasks[task].isLoading = true;
            break;
        case PTRACE_EVENT_SECCOMP:
            takeCall(task);
            break;
        default:
            break;
    }
}

void TracedRun::takeNewTask(pid_t parent, bool isThread) {
    unsigned long message = 0;
    if (::ptrace(PTRACE_GETEVENTMSG, parent, nullptr, &message) != 0) {
        return;
    }
    const auto task = static_cast<pid_t>(message);
    if (m_endedUntold.erase(task) == 0) {
        const Task& origin = m_tasks[parent];
        m_tasks[task] = {origin.program, isThread, true, origin.isLoading};
    }
}

bool TracedRun::isCounted(pid_t task) {
    std::string& program = m_tasks[task].program;
    // Before the first program there is this one alone; a task whose parent has not told of it is asked.
    if (program.empty() && task != m_first) {
        program = programOf(task);
    }
    return program.compare(0, m_folder.size() + 1, m_folder + "/") == 0;
}

void TracedRun::takeCall(pid_t task) {
    user_regs_struct registers{};
    if (!isCounted(task) || ::ptrace(PTRACE_GETREGS, task, nullptr, &registers) != 0) {
        return;
    }
    const int call = static_cast<int>(registers.orig_rax);
    m_tasks[task].isLoading &= call != kFirstOfProgram;
    if (m_fault && call != m_fault->call) {
        return;
    }
    const int number = ++m_report.counts[call];
    if (!m_fault || number != m_fault->number) {
        return;
    }
    // No call has this number, and so the kernel makes none and gives back what is in the register.
    registers.orig_rax = ~0ULL;
    registers.rax = static_cast<unsigned long long>(-static_cast<long long>(m_fault->error));
    if (::ptrace(PTRACE_SETREGS, task, nullptr, &registers) == 0) {
        m_report.struck = m_tasks[task].program;
    }
}

void TracedRun::takeEnd(pid_t task, int status) {
    const Task ended = std::exchange(m_tasks[task], {});
    m_tasks.erase(task);
    if (!ended.isTold) {
        m_endedUntold.insert(task);
    }
    if (WIFSIGNALED(status) && !ended.isThread) {
        m_report.deaths.push_back({ended.program, WTERMSIG(status), ended.isLoading});
    }
    if (task == m_first) {
        m_firstHasEnded = true;
        g_seconds = 0;
        constexpr int kEndedBySignal = 128;
        m_report.status = WIFSIGNALED(status) ? kEndedBySignal + WTERMSIG(status) : WEXITSTATUS(status);
    }
}
