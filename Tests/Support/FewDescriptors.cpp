// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/FewDescriptors.h"

#include <unistd.h>

namespace zpk_test {

FewDescriptors::FewDescriptors(std::size_t free) {
    ::getrlimit(RLIMIT_NOFILE, &m_before);
    // As many as there need be, so that they are soon taken.
    constexpr rlim_t kSoonTaken = 64;
    const rlimit few{kSoonTaken, m_before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &few);
    do {
        m_taken.emplace_back(::dup(STDIN_FILENO));
    } while (m_taken.back().isOpen());
    // The last one is none.
    m_taken.resize(m_taken.size() - 1 - free);
}

FewDescriptors::~FewDescriptors() {
    ::setrlimit(RLIMIT_NOFILE, &m_before);
}

}  // namespace zpk_test
