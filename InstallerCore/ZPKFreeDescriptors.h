// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>

/// The descriptors that this process may still open. Main thread only.
class ZPKFreeDescriptors {
public:
    ZPKFreeDescriptors() = delete;

    /// True when so many are free; else the cause is in errno.
    static bool areThere(std::size_t count);
};
