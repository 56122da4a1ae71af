// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKWakeUp.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>

ZPKWakeUp::ZPKWakeUp() : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_event.isOpen()) {
        m_outcome = ZPKFailure::ofSystem("eventfd", errno);
    }
}

void ZPKWakeUp::wake() const {
    // Whoever is not woken may wait for good. With EAGAIN, a wake-up is waiting already.
    constexpr int kTries = 10;
    for (int tries = 0; ::eventfd_write(m_event.get(), 1) != 0 && errno != EAGAIN && tries < kTries;) {
        ++tries;
    }
}

bool ZPKWakeUp::wait(int descriptor, int milliseconds) const {
    pollfd waited[] = {{m_event.get(), POLLIN, 0}, {descriptor, POLLIN, 0}};
    if (::poll(waited, 2, milliseconds) <= 0) {
        return false;
    }
    if (waited[0].revents != 0) {
        eventfd_t ignored = 0;
        ::eventfd_read(m_event.get(), &ignored);
    }
    return waited[1].revents != 0;
}
