// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

struct archive;

namespace zpk_archive {

class PlainStream;

/// One member's header.
struct Member {
    std::string name;
    mode_t mode = 0;  ///< Type and permission bits.
    std::int64_t size = 0;
    std::int64_t modifiedSeconds = 0;
    long modifiedNanoseconds = 0;
    unsigned linkCount = 1;
    std::string symbolicLinkTarget;
    bool dataComeWithLastName = false;  ///< Of several names of one file (newc); else with each.
    std::string hardLinkTarget;         ///< Not empty: the earlier member with the same inode number.
};

/// Reads the members of a CPIO archive one after the other.
class CpioReader {
public:
    explicit CpioReader(PlainStream& stream);
    ~CpioReader();

    /// The next member; nothing at the archive's end mark. Throws ArchiveFailure when the archive is
    /// damaged or ends without its mark. The data of the member before must have been read.
    std::optional<Member> next();

    /// The next bytes of the member's data, valid until the next call; empty at their end.
    /// Throws ArchiveFailure when the data are cut short.
    std::span<const std::uint8_t> nextData();

    /// Takes what follows the end mark, so that the last checksum is verified too.
    void finish();

private:
    struct Client;
    [[noreturn]] void fail(const char* otherwise);

    std::unique_ptr<Client> m_client;
};

}  // namespace zpk_archive
