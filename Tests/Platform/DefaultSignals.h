// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <csignal>
#include <vector>

namespace zpk_test {

/// For a stretch of code no signal is ignored, whatever the caller of the tests ignores: a shell does two for
/// what it starts in the background.
class DefaultSignals {
public:
    DefaultSignals() {
        for (int number = 1; number < NSIG; ++number) {
            if (std::signal(number, SIG_DFL) == SIG_IGN) {
                m_ignored.push_back(number);
            }
        }
    }
    ~DefaultSignals() {
        for (const int number : m_ignored) {
            std::signal(number, SIG_IGN);
        }
    }
    DefaultSignals(const DefaultSignals&) = delete;
    DefaultSignals& operator=(const DefaultSignals&) = delete;

private:
    std::vector<int> m_ignored;
};

}  // namespace zpk_test
