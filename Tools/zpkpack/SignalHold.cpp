// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/SignalHold.h"

#include <sys/signalfd.h>

#include <cerrno>

#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

bool isIgnored(int signal) {
    struct sigaction action;
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t endingSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal)) {
            ::sigaddset(&signals, signal);
        }
    }
    return signals;
}

}  // namespace

SignalHold::SignalHold() {
    const sigset_t signals = endingSignals();
    m_descriptor = ZPKFileDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC));
    if (!m_descriptor.isOpen() || ::sigprocmask(SIG_BLOCK, &signals, &m_before) != 0) {
        throw PackagerFailure::ofSystem("signals", errno);
    }
}

SignalHold::~SignalHold() {
    ::sigprocmask(SIG_SETMASK, &m_before, nullptr);
}

}  // namespace zpk_packager
