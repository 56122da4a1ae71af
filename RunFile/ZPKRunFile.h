// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "Base/ZPKFailure.h"
#include "Platform/ZPKFileHandle.h"
#include "RunFile/ZPKPageMemory.h"
#include "RunFile/ZPKRunFileTable.h"

/// A whole package in one executable file: a program, the files of a bundle and a table of them.
/// Immutable once open; may be read from any thread.
class ZPKRunFile {
public:
    /// Opens the file and checks everything but the files in it, whose checksums are checked when they
    /// are placed. Fails when it was cut short or changed.
    static ZPKResult<ZPKRunFile> open(const std::string& path);

    const ZPKFileHandle& file() const { return m_file; }

    /// Puts `size` bytes from `offset` on to `bytes`. Fails when the file ends before.
    ZPKOutcome read(std::uint64_t offset, char* bytes, std::size_t size) const;

    /// What the block of this number holds, once its checksum is verified.
    ZPKResult<ZPKPageMemory> plainBlock(std::size_t index) const;

    /// What is said of a file that does not hold what its checksums say.
    ZPKFailure damage() const;

    const ZPKRunFileTable& table() const { return m_table; }

private:
    ZPKRunFile(ZPKFileHandle file, ZPKRunFileTable table)
        : m_file(std::move(file)), m_table(std::move(table)) {}

    ZPKFileHandle m_file;
    ZPKRunFileTable m_table;
};
