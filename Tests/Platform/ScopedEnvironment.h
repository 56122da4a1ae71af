// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

namespace zpk_test {

/// Sets or unsets an environment variable for a stretch of code.
class ScopedEnvironment {
public:
    ScopedEnvironment(const std::string& variable, const std::optional<std::string>& value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string m_variable;
    std::optional<std::string> m_before;
};

}  // namespace zpk_test
