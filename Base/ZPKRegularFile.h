// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "Base/ZPKFileDescriptor.h"

/// Files that are what they look like: opening a FIFO or a device in their place neither waits nor does
/// anything else, and counts as no file. Links are followed. Failures leave their cause in errno. May be
/// called from any thread.
class ZPKRegularFile {
public:
    ZPKRegularFile() = delete;

    /// The file, open for reading; closed on failure.
    static ZPKFileDescriptor open(const std::string& path);

    /// All bytes of a file of up to `limit` bytes; nothing on failure, with EFBIG for a larger one.
    static std::optional<std::string> contents(const std::string& path, std::size_t limit);
};
