// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Platform/ScopedEnvironment.h"

#include <cstdlib>

namespace zpk_test {

namespace {

void set(const std::string& variable, const std::optional<std::string>& value) {
    if (value) {
        ::setenv(variable.c_str(), value->c_str(), 1);
    } else {
        ::unsetenv(variable.c_str());
    }
}

}  // namespace

ScopedEnvironment::ScopedEnvironment(const std::string& variable, const std::optional<std::string>& value)
    : m_variable(variable) {
    if (const char* const before = std::getenv(variable.c_str())) {
        m_before = before;
    }
    set(variable, value);
}

ScopedEnvironment::~ScopedEnvironment() {
    set(m_variable, m_before);
}

}  // namespace zpk_test
