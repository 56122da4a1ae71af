// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>
#include <vector>

/// What somebody meant who wrote a name that nobody knows. May be called from any thread.
class ZPKNearestName {
public:
    ZPKNearestName() = delete;

    /// The known name that `word` differs from least: one in other capitals before all, else one that at
    /// most a third of the letters, but always one letter, were wrong, missing, too many or in the wrong
    /// order to make. Of equally near ones the first; empty when none is near. Names are compared byte by
    /// byte; a word of more than 64 bytes is near to nothing.
    static std::string_view among(const std::vector<std::string_view>& known, std::string_view word);
};
