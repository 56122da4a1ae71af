// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Archives are mostly compressed, and a checksum keeps a changed byte from all that lies behind it. So what
// is changed is the plain archive, or one of its members as a whole, and it is packed again, in members of
// the project's own form or as one foreign one, whose header may have any of its fields; one time in four the
// packed bytes themselves are changed.

#include <libdeflate.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <vector>

#include "Archive/GzipMember.h"
#include "Fuzz/MemberMutator.h"

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

void append(Bytes& bytes, std::initializer_list<std::uint8_t> more) {
    bytes.insert(bytes.end(), more);
}

/// A member whose header has no fields, with those that are chosen.
Bytes withFields(const Bytes& member, unsigned chosen) {
    constexpr std::ptrdiff_t kFixedPart = 10;
    constexpr std::size_t kFlags = 3;
    constexpr std::uint8_t kHasChecksum = 2;
    constexpr std::uint8_t kHasExtra = 4;
    constexpr std::uint8_t kHasName = 8;
    constexpr std::uint8_t kHasComment = 16;
    Bytes made(member.begin(), member.begin() + kFixedPart);
    made[kFlags] = chosen & (kHasChecksum | kHasExtra | kHasName | kHasComment);
    if ((made[kFlags] & kHasExtra) != 0) {
        append(made, {6, 0, 'A', 'B', 2, 0, 'x', 'y'});
    }
    if ((made[kFlags] & kHasName) != 0) {
        append(made, {'n', 'a', 'm', 'e', 0});
    }
    if ((made[kFlags] & kHasComment) != 0) {
        append(made, {'w', 'o', 'r', 'd', 0});
    }
    if ((made[kFlags] & kHasChecksum) != 0) {
        const std::uint32_t sum = libdeflate_crc32(0, made.data(), made.size());
        append(made, {static_cast<std::uint8_t>(sum), static_cast<std::uint8_t>(sum >> 8U)});
    }
    made.insert(made.end(), member.begin() + kFixedPart, member.end());
    return made;
}

Bytes foreignMember(libdeflate_compressor* compressor, const Bytes& plain, unsigned fields) {
    Bytes packed(libdeflate_gzip_compress_bound(compressor, plain.size()));
    packed.resize(
        libdeflate_gzip_compress(compressor, plain.data(), plain.size(), packed.data(), packed.size()));
    return packed.empty() ? packed : withFields(packed, fields);
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

/// Every other time a member as a whole, where there are members, else bytes.
void change(Bytes& plain, std::size_t most, unsigned seed) {
    if (seed % 2 == 0 || !zpk_fuzz::mutateMembers(plain, most, seed / 2)) {
        const std::size_t size = plain.size();
        plain.resize(most);
        plain.resize(LLVMFuzzerMutate(plain.data(), size, most));
    }
}

/// Nothing where it cannot be packed.
Bytes packedAgain(const Bytes& plain, unsigned seed) {
    const std::unique_ptr<libdeflate_compressor, CompressorCloser> compressor(
        libdeflate_alloc_compressor(kLevel));
    return seed % 4 == 1 ? foreignMember(compressor.get(), plain, seed / 4)
                         : ownMember(compressor.get(), plain);
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                               unsigned seed) {
    const bool isGzip = size > 2 && data[0] == 0x1f && data[1] == 0x8b;
    const unsigned more = seed / 64;
    Bytes made(data, data + size);
    if (!isGzip) {
        change(made, maximum, more);
    } else if (seed % 4 != 0) {
        made = unpacked(data, size);
        if (!made.empty()) {
            change(made, kLargestPlain, more);
            made = packedAgain(made, seed);
        }
    } else {
        made.clear();
    }
    if (made.empty() || made.size() > maximum) {
        return LLVMFuzzerMutate(data, size, maximum);
    }
    std::memcpy(data, made.data(), made.size());
    return made.size();
}
