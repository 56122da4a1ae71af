// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The small texts in which the kernel and the device manager say what they know: files that have no
/// size before they are read, and folders that change at any time. May be called from any thread.
class ZPKKernelFile {
public:
    ZPKKernelFile() = delete;

    /// All bytes of the file; nothing when it cannot be read or is larger than 16 MiB.
    static std::optional<std::string> contents(const std::string& path);

    /// What the folder holds, without "." and "..", in no order; nothing when it cannot be read.
    static std::vector<std::string> namesInFolder(const std::string& path);

    /// The parts of `text` between the separators, which are taken away; empty parts count.
    static std::vector<std::string_view> split(std::string_view text, char separator);
};
