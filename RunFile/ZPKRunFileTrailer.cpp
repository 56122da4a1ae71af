// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFileTrailer.h"

#include "RunFile/ZPKByteOrder.h"
#include "RunFile/ZPKRunFileChecksum.h"

namespace {

constexpr std::string_view kMark = "ZPKRUN\x01\n";

}  // namespace

std::string ZPKRunFileTrailer::encoded() const {
    ZPKByteWriter out;
    out.number(programSize);
    out.number(programChecksum);
    out.number(tableOffset);
    out.number(tableSize);
    out.number(tableChecksum);
    out.number(tableOffset + tableSize + kSize);
    out.number(ZPKRunFileChecksum::of(out.bytes()));
    return out.bytes() + std::string(kMark);
}

std::optional<ZPKRunFileTrailer> ZPKRunFileTrailer::decoded(std::string_view bytes, std::uint64_t fileSize) {
    if (bytes.size() != kSize || !bytes.ends_with(kMark)) {
        return std::nullopt;
    }
    ZPKByteReader in(bytes);
    ZPKRunFileTrailer trailer;
    trailer.programSize = in.number<std::uint64_t>();
    trailer.programChecksum = in.number<std::uint64_t>();
    trailer.tableOffset = in.number<std::uint64_t>();
    trailer.tableSize = in.number<std::uint64_t>();
    trailer.tableChecksum = in.number<std::uint64_t>();
    const auto wholeSize = in.number<std::uint64_t>();
    const auto checksum = in.number<std::uint64_t>();
    const std::size_t covered = kSize - kMark.size() - sizeof(checksum);
    const bool isWhole = checksum == ZPKRunFileChecksum::of(bytes.substr(0, covered)) &&
                         wholeSize == fileSize && trailer.tableOffset <= fileSize - kSize &&
                         trailer.tableSize == fileSize - kSize - trailer.tableOffset &&
                         trailer.programSize <= trailer.tableOffset;
    return isWhole ? std::optional(trailer) : std::nullopt;
}
