// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKCrashRescue.h"

#include <unistd.h>

#include <csignal>
#include <string_view>
#include <utility>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKDiagnostic.h"
#include "Base/ZPKEnvironment.h"
#include "Platform/ZPKIgnoredSignals.h"

namespace {

/// The launcher's first argument in a process that has become it. An argument, since the environment is the
/// setup program's.
constexpr std::string_view kName = "Zephyrkit-on-the-terminal";

/// The trap is how a library of the toolkit's gives up.
constexpr int kCrashes[] = {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGTRAP};

/// Those that every system knows are below it.
constexpr int kSignals = 32;

/// What a signal's handler may use: it must not ask for anything.
struct Way {
    const char* program;
    char* const* arguments;
    char* const* environment;
    /// What this process ignores on its own account.
    sigset_t ignored;
    /// The crashes that the person ignores, as far as a crash can be.
    sigset_t ignoredCrashes;
};

Way g_way;

void takeCrashes(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    // The signal must not stay blocked in what this process becomes.
    action.sa_flags = static_cast<int>(SA_NODEFER | SA_RESETHAND);
    ::sigemptyset(&g_way.ignoredCrashes);
    for (const int signal : kCrashes) {
        struct sigaction before {};
        ::sigaction(signal, &action, &before);
        if (before.sa_handler == SIG_IGN) {
            ::sigaddset(&g_way.ignoredCrashes, signal);
        }
    }
}

/// Makes them what they were.
void leaveCrashes() {
    for (const int signal : kCrashes) {
        std::signal(signal, ::sigismember(&g_way.ignoredCrashes, signal) == 1 ? SIG_IGN : SIG_DFL);
    }
}

void becomeFirstStage() {
    leaveCrashes();
    for (int ignored = 1; ignored < kSignals; ++ignored) {
        if (::sigismember(&g_way.ignored, ignored) == 1) {
            std::signal(ignored, SIG_DFL);
        }
    }
    ::execve(g_way.program, g_way.arguments, g_way.environment);
}

void goOnAfterCrash(int signal) {
    constexpr std::string_view kWords = "Zephyrkit: no windows: what opens them crashed\n";
    static_cast<void>(ZPKDescriptorIO::writeWhole(STDERR_FILENO, kWords));
    becomeFirstStage();
    ::raise(signal);
}

}  // namespace

ZPKCrashRescue::ZPKCrashRescue(std::string program, int argc, char** argv)
    : m_program(std::move(program)), m_name(kName), m_arguments{m_name.data()} {
    for (int index = 1; index < argc; ++index) {
        m_arguments.push_back(argv[index]);
    }
    m_arguments.push_back(nullptr);
    g_way = {
        m_program.c_str(), m_arguments.data(), ZPKEnvironment::ofChildren(), ZPKIgnoredSignals::own(), {}};
    takeCrashes(goOnAfterCrash);
}

void ZPKCrashRescue::giveUp(std::string_view reason) {
    if (g_way.program != nullptr) {
        ZPKDiagnostic::tell({"no windows: ", reason});
        becomeFirstStage();
    }
}

void ZPKCrashRescue::end() {
    if (g_way.program != nullptr) {
        leaveCrashes();
        g_way.program = nullptr;
    }
}

bool ZPKCrashRescue::wasCalled(int argc, char** argv) {
    return argc > 0 && argv[0] == kName;
}
