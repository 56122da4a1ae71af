// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKIgnoredSignals.h"

#include <initializer_list>

namespace {

sigset_t noSignals() {
    sigset_t none;
    ::sigemptyset(&none);
    return none;
}

sigset_t& ownSignals() {
    static sigset_t signals = noSignals();
    return signals;
}

}  // namespace

void ZPKIgnoredSignals::ignoreThoseOfWrites() {
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
        if (std::signal(signal, SIG_IGN) != SIG_IGN) {
            ::sigaddset(&ownSignals(), signal);
        }
    }
}

sigset_t ZPKIgnoredSignals::own() {
    return ownSignals();
}
