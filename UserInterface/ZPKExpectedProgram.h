// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// A program of which the desktop was told to expect a window: it shows that the person waits for it, by the
/// pointer for instance, and may give the window the keys. When this goes, nothing is expected any more. Main
/// thread only.
class ZPKExpectedProgram {
public:
    virtual ~ZPKExpectedProgram() = default;

    /// What the program is to find in its environment, so that the desktop knows its window: `NAME=value`
    /// each.
    virtual std::vector<std::string> environment() const = 0;
};
