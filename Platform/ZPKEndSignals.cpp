// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKEndSignals.h"

#include <semaphore.h>

#include <cerrno>
#include <csignal>
#include <utility>

#include "Base/ZPKDescriptorIO.h"

namespace {

constexpr int kEndSignals[] = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> g_received{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may not wait for a lock");

/// Takes no descriptor, and may be raised by a signal handler. It stays for the life of the process: a
/// handler may still be raising it when the signals are already as they were.
sem_t& arrivals() {
    static sem_t semaphore;
    [[maybe_unused]] static const int kMade = ::sem_init(&semaphore, 0, 0);
    return semaphore;
}

void receive(int signal) {
    const int before = errno;
    g_received = signal;
    ::sem_post(&arrivals());
    errno = before;
}

/// Only where the signal does what it does: one that the person ignores stays ignored.
void exchangeHandlers(void (*from)(int), void (*to)(int)) {
    for (const int signal : kEndSignals) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == from) {
            action = {};
            action.sa_handler = to;
            action.sa_flags = SA_RESTART;
            ::sigaction(signal, &action, nullptr);
        }
    }
}

}  // namespace

ZPKEndSignals::ZPKEndSignals(std::function<void(int)> tell) : m_tell(std::move(tell)) {
    arrivals();
    m_thread = std::thread([this] { tellOfEach(); });
    exchangeHandlers(SIG_DFL, &receive);
}

ZPKEndSignals::~ZPKEndSignals() {
    exchangeHandlers(&receive, SIG_DFL);
    m_isOver = true;
    ::sem_post(&arrivals());
    m_thread.join();
}

void ZPKEndSignals::tellOfEach() {
    while (!m_isOver) {
        ZPKDescriptorIO::retry([] { return ::sem_wait(&arrivals()); });
        if (const int signal = g_received.exchange(0)) {
            m_tell(signal);
        }
    }
}
