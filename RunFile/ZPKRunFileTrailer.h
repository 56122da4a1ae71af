// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The last bytes of a run file: where the table is, and what the parts that have no checksum of their
/// own must come to. A value.
struct ZPKRunFileTrailer {
    /// Bytes of a trailer in the file.
    static constexpr std::size_t kSize = 64;

    /// How the parts of the file follow each other: program, data, table, trailer.
    std::uint64_t programSize = 0;
    std::uint64_t programChecksum = 0;
    std::uint64_t tableOffset = 0;
    std::uint64_t tableSize = 0;
    std::uint64_t tableChecksum = 0;

    std::string encoded() const;

    /// Nothing when these are not the last bytes of a whole run file of `fileSize` bytes.
    static std::optional<ZPKRunFileTrailer> decoded(std::string_view bytes, std::uint64_t fileSize);
};
