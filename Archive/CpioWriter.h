// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Archive/Member.h"

namespace zpk_archive {

class GzipWriter;

/// Writes members with the portable ASCII (odc) header. Operations throw ArchiveFailure when the output
/// fails.
class CpioWriter {
public:
    /// Longest name of a member, in bytes.
    static constexpr std::size_t kNameLimit = 0777777 - 1;

    explicit CpioWriter(GzipWriter& output) : m_output(output) {}

    /// Starts a member; its `inode` tells files with several names apart and is 0 for all others. Throws
    /// MemberFailure when the header cannot hold it, and then nothing has been written.
    void startMember(const Member& member);
    /// Data of the member, exactly as many bytes as its size says, in as many calls as it takes.
    void writeData(std::span<const std::uint8_t> bytes);
    /// Writes the end mark.
    void finish();

private:
    void writeHeader(const Member& member, std::uint64_t dataSize);

    GzipWriter& m_output;
};

}  // namespace zpk_archive
