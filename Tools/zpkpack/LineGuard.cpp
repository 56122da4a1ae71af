// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/LineGuard.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

#include "Tools/zpkpack/ProgressSurface.h"

namespace zpk_packager {

namespace {

/// The signal's own action is there again: it ends the program as soon as this returns.
void wipeAndEnd(int signal) {
    const int error = errno;
    const std::string_view wipe = ProgressSurface::kWipe;
    // Whoever reads the terminal may be gone.
    static_cast<void>(::write(STDERR_FILENO, wipe.data(), wipe.size()) < 0);
    ::raise(signal);
    errno = error;
}

}  // namespace

LineGuard::LineGuard(const ProgressSurface& surface)
    : m_isNeeded(surface.progressKind() == ProgressSurface::Kind::InPlace) {
    for (std::size_t index = 0; m_isNeeded && index < kSignals.size(); ++index) {
        struct sigaction action {};
        action.sa_handler = &wipeAndEnd;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        ::sigfillset(&action.sa_mask);
        ::sigaction(kSignals[index], nullptr, &m_before[index]);
        if (m_before[index].sa_handler != SIG_IGN) {
            ::sigaction(kSignals[index], &action, nullptr);
        }
    }
}

LineGuard::~LineGuard() {
    for (std::size_t index = 0; m_isNeeded && index < kSignals.size(); ++index) {
        ::sigaction(kSignals[index], &m_before[index], nullptr);
    }
}

}  // namespace zpk_packager
