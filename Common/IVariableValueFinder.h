// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace varno_zpk {

/// Knows the values of variables.
class IVariableValueFinder {
public:
    virtual ~IVariableValueFinder() = default;

    /// The value's UTF-8 text, or null for an unknown variable. `name` is the whole reference, its
    /// "$" delimiters included. `value` is a scratch string that the finder may fill and return a
    /// pointer into; the caller copies the result before it lets go of either string.
    virtual const char* FindValue(const std::string& name, std::string& value) = 0;
};

}  // namespace varno_zpk
