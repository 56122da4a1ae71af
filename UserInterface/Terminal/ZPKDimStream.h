// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <ext/stdio_sync_filebuf.h>

#include <cstdio>
#include <optional>
#include <ostream>
#include <streambuf>

/// Draws dim what this process writes to a standard stream for a stretch of code, where it stands among words
/// for a person. What a child process writes stays as it is. Made and destroyed while one thread runs; any
/// thread may write.
class ZPKDimStream {
public:
    /// `stream` is `stdout` or `stderr`, which is another one meanwhile, or stays the same when there is no
    /// memory for that; `alongside` is the stream of the C++ library for the same. Both lead to `descriptor`.
    ZPKDimStream(FILE*& stream, std::ostream& alongside, int descriptor);
    ~ZPKDimStream();
    ZPKDimStream(const ZPKDimStream&) = delete;
    ZPKDimStream& operator=(const ZPKDimStream&) = delete;

private:
    FILE*& m_stream;
    FILE* const m_before;
    std::ostream& m_alongside;
    std::streambuf* m_alongsideBefore = nullptr;
    const int m_descriptor;
    FILE* m_dimmed;
    std::optional<__gnu_cxx::stdio_sync_filebuf<char>> m_buffer;
};
