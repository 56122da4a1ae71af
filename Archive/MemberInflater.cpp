// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/MemberInflater.h"

#include <isa-l/crc.h>
#include <libdeflate.h>

#include <algorithm>
#include <new>

#include "Archive/Failure.h"
#include "Archive/GzipMember.h"

namespace zpk_archive {

void MemberInflater::Closer::operator()(libdeflate_decompressor* decompressor) const {
    libdeflate_free_decompressor(decompressor);
}

MemberInflater::MemberInflater() : m_decompressor(libdeflate_alloc_decompressor()) {
    if (!m_decompressor) {
        throw std::bad_alloc();
    }
}

MemberInflater::~MemberInflater() = default;

void MemberInflater::inflate(std::span<const std::uint8_t> packed, ByteBuffer& plain, std::size_t plainSize) {
    // The same room for every member, so that it is made once.
    plain.reserve(kGzipMemberPlainSize);
    std::size_t used = 0;
    // Asked for no size of what comes out, it takes all but the expected one for damage.
    const libdeflate_result result = libdeflate_deflate_decompress_ex(
        m_decompressor.get(), packed.data(), packed.size(), plain.data(), plainSize, &used, nullptr);
    if (result == LIBDEFLATE_BAD_DATA) {
        throw ArchiveFailure("the compressed data are damaged");
    }
    if (result != LIBDEFLATE_SUCCESS || packed.size() - used != kGzipMemberTrailerSize) {
        throw ArchiveFailure("the compressed data are damaged (length)");
    }
    const std::uint32_t crc = ::crc32_gzip_refl(0, plain.data(), plainSize);
    const auto trailer = makeGzipMemberTrailer(crc, static_cast<std::uint32_t>(plainSize));
    if (!std::equal(trailer.begin(), trailer.end(), packed.data() + used)) {
        throw ArchiveFailure("the compressed data are damaged (checksum)");
    }
    plain.size = plainSize;
}

}  // namespace zpk_archive
