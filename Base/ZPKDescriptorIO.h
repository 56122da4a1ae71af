// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Whole reads and writes on open descriptors, the one place that knows what an interrupted call and
/// a write of nothing mean: the former goes on, the latter is a full disk. Failures leave their cause
/// in errno. May be called from any thread.
class ZPKDescriptorIO {
public:
    ZPKDescriptorIO() = delete;

    /// Repeats a call that gives -1 while a signal interrupts it.
    template <typename Call>
    static auto retry(Call call) {
        for (;;) {
            const auto result = call();
            if (result >= 0 || !wasInterrupted()) {
                return result;
            }
        }
    }

    /// Reads what is there, up to `size` bytes; 0 at the end, -1 on failure.
    static ssize_t readSome(int descriptor, void* buffer, std::size_t size);

    /// Reads until `size` bytes are there or the input ends; fewer than `size` only at the end, -1 on
    /// failure.
    static ssize_t readWhole(int descriptor, void* buffer, std::size_t size);

    /// The same from `offset` on, without the descriptor's own position.
    static ssize_t readWholeAt(int descriptor, void* buffer, std::size_t size, off_t offset);

    /// What is left to read, as long as that is no more than `limit` bytes; nothing on failure, with
    /// EFBIG where there is more.
    static std::optional<std::string> readToEnd(int descriptor, std::size_t limit);

    /// Writes all of it, or fails with some of it written.
    [[nodiscard]] static bool writeWhole(int descriptor, const void* bytes, std::size_t size);
    [[nodiscard]] static bool writeWhole(int descriptor, std::string_view text) {
        return writeWhole(descriptor, text.data(), text.size());
    }

    /// The same from `offset` on, without the descriptor's own position.
    [[nodiscard]] static bool writeWholeAt(int descriptor, const void* bytes, std::size_t size, off_t offset);

private:
    static bool wasInterrupted();
};
