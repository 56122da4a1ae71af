// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace zpk_archive {

class InputFile;

/// Plain bytes in each gzip member of an archive of ours, but the last. Larger members gain under one
/// per cent in size; smaller ones lose it fast.
constexpr std::size_t kGzipMemberPlainSize = std::size_t{1} << 20;

/// More than any member of ours can have; a field that promises more is not believed.
constexpr std::size_t kGzipMemberPackedLimit = kGzipMemberPlainSize + kGzipMemberPlainSize / 8;

/// The sizes that a member of ours states in an extra field of its header ("ZK", eight bytes: length of
/// the deflate data with the eight bytes of trailer, then of the plain data, both little-endian).
struct GzipMemberSizes {
    std::uint32_t packed = 0;
    std::uint32_t plain = 0;
};

constexpr std::size_t kGzipMemberHeaderSize = 24;
constexpr std::size_t kGzipMemberTrailerSize = 8;

std::array<std::uint8_t, kGzipMemberHeaderSize> makeGzipMemberHeader(const GzipMemberSizes& sizes);
std::array<std::uint8_t, kGzipMemberTrailerSize> makeGzipMemberTrailer(std::uint32_t crc,
                                                                       std::uint32_t plainSize);

/// Reads a gzip header up to the deflate data. Gives the sizes when they are stated and fit the limits.
/// Throws ArchiveFailure when it is damaged or cut short.
std::optional<GzipMemberSizes> readGzipMemberHeader(InputFile& input);

}  // namespace zpk_archive
