// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "Archive/Member.h"

struct archive;

namespace zpk_archive {

class PlainStream;

/// Reads the members of a CPIO archive one after the other.
class CpioReader {
public:
    explicit CpioReader(PlainStream& stream);
    ~CpioReader();
    CpioReader(const CpioReader&) = delete;
    CpioReader& operator=(const CpioReader&) = delete;

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
