// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Archives are mostly compressed, and a checksum keeps a changed byte from all that lies behind it. So what
// is changed is the plain archive, and it is packed again, in members of the project's own form or as one
// foreign one; one time in four the packed bytes themselves are changed.

#include <libdeflate.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "Archive/GzipMember.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximum);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLargestPlain = std::size_t{64} * 1024;
constexpr int kLevel = 1;

struct CompressorCloser {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};
struct DecompressorCloser {
    void operator()(libdeflate_decompressor* decompressor) const {
        libdeflate_free_decompressor(decompressor);
    }
};

/// The plain bytes of all members; empty when they are none, or too many.
Bytes unpacked(const std::uint8_t* data, std::size_t size) {
    const std::unique_ptr<libdeflate_decompressor, DecompressorCloser> decompressor(
        libdeflate_alloc_decompressor());
    Bytes plain(kLargestPlain);
    std::size_t done = 0;
    while (size > 0) {
        std::size_t taken = 0;
        std::size_t made = 0;
        if (libdeflate_gzip_decompress_ex(decompressor.get(), data, size, plain.data() + done,
                                          plain.size() - done, &taken, &made) != LIBDEFLATE_SUCCESS) {
            return {};
        }
        done += made;
        data += taken;
        size -= taken;
    }
    plain.resize(done);
    return plain;
}

Bytes foreignMember(libdeflate_compressor* compressor, const Bytes& plain) {
    Bytes packed(libdeflate_gzip_compress_bound(compressor, plain.size()));
    packed.resize(
        libdeflate_gzip_compress(compressor, plain.data(), plain.size(), packed.data(), packed.size()));
    return packed;
}

Bytes ownMember(libdeflate_compressor* compressor, const Bytes& plain) {
    using namespace zpk_archive;
    Bytes deflated(libdeflate_deflate_compress_bound(compressor, plain.size()));
    deflated.resize(libdeflate_deflate_compress(compressor, plain.data(), plain.size(), deflated.data(),
                                                deflated.size()));
    const auto plainSize = static_cast<std::uint32_t>(plain.size());
    const auto packedSize = static_cast<std::uint32_t>(deflated.size() + kGzipMemberTrailerSize);
    const auto header = makeGzipMemberHeader({packedSize, plainSize});
    const auto trailer = makeGzipMemberTrailer(libdeflate_crc32(0, plain.data(), plain.size()), plainSize);
    Bytes member(header.begin(), header.end());
    member.insert(member.end(), deflated.begin(), deflated.end());
    member.insert(member.end(), trailer.begin(), trailer.end());
    return member;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                               unsigned seed) {
    const bool isGzip = size > 2 && data[0] == 0x1f && data[1] == 0x8b;
    if (!isGzip || seed % 4 == 0) {
        return LLVMFuzzerMutate(data, size, maximum);
    }
    Bytes plain = unpacked(data, size);
    if (plain.empty()) {
        return LLVMFuzzerMutate(data, size, maximum);
    }
    const std::size_t plainSize = plain.size();
    plain.resize(kLargestPlain);
    plain.resize(LLVMFuzzerMutate(plain.data(), plainSize, kLargestPlain));
    const std::unique_ptr<libdeflate_compressor, CompressorCloser> compressor(
        libdeflate_alloc_compressor(kLevel));
    const Bytes packed =
        seed % 4 == 1 ? foreignMember(compressor.get(), plain) : ownMember(compressor.get(), plain);
    if (packed.empty() || packed.size() > maximum) {
        return LLVMFuzzerMutate(data, size, maximum);
    }
    std::memcpy(data, packed.data(), packed.size());
    return packed.size();
}
