// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>

/// Makes programs easier to compress. A program calls one function from many places, and each call holds the
/// distance to it, another one each time. Here the distance gives way to the place that is meant, which is
/// the same from everywhere; the same for jumps and for data found by distance.
///
/// For x86-64. Whatever is no program of the form ELF stays as it is; any bytes at all come back as they
/// were. May be called from any thread.
class ZPKProgramFilter {
public:
    ZPKProgramFilter() = delete;

    /// `bytes` are a whole file of `size` bytes, changed in place.
    static void pack(char* bytes, std::size_t size);

    /// Undoes `pack`.
    static void unpack(char* bytes, std::size_t size);
};
