// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Archive/ByteSource.h"
#include "Archive/ReadAhead.h"
#include "Base/ZPKFileDescriptor.h"

namespace zpk_archive {

/// A regular file, or what somebody else supplies, read once from start to end through a buffer.
/// Operations throw ArchiveFailure when it cannot be read.
class InputFile {
public:
    /// Opens the file; reads nothing yet.
    explicit InputFile(const std::string& path);
    explicit InputFile(ByteSource source);

    /// Reads the rest in a thread of its own, where one can be started; for who has work to do with what it
    /// takes.
    void readAhead();

    /// Tries to have at least `count` bytes in the buffer (`count` up to the buffer's size, 256 KiB);
    /// gives what there is, which is less only at the end of the file.
    std::span<const std::uint8_t> peek(std::size_t count);
    /// What is in the buffer, refilled when it is empty; empty at the end of the file.
    std::span<const std::uint8_t> available() { return peek(1); }
    void consume(std::size_t count);

    /// Reads up to `count` bytes; returns fewer only at the end of the file.
    std::size_t read(std::uint8_t* bytes, std::size_t count);

private:
    ByteSource sourceOfRest();
    std::size_t readSome(std::uint8_t* bytes, std::size_t count);
    void gather(std::size_t count);

    ZPKFileDescriptor m_file;
    ByteSource m_source;  ///< Read instead of the file, where there is one.
    std::unique_ptr<ReadAhead> m_ahead;
    std::vector<std::uint8_t> m_buffer;
    std::span<const std::uint8_t> m_rest;   ///< In the buffer, or in what was read ahead.
    std::span<const std::uint8_t> m_ready;  ///< What was read ahead and comes after that.
};

}  // namespace zpk_archive
