// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdio>

/// Draws dim what this process writes to a standard stream for a stretch of code, where it stands among words
/// for a person. What a child process writes stays as it is. Made and destroyed while one thread runs; any
/// thread may write.
class ZPKDimStream {
public:
    /// `stream` is `stdout` or `stderr`, which is another one meanwhile, or stays the same when there is no
    /// memory for that. It leads to `descriptor`.
    ZPKDimStream(FILE*& stream, int descriptor);
    ~ZPKDimStream();
    ZPKDimStream(const ZPKDimStream&) = delete;
    ZPKDimStream& operator=(const ZPKDimStream&) = delete;

private:
    FILE*& m_stream;
    FILE* const m_before;
    const int m_descriptor;
    FILE* m_dimmed;
};
