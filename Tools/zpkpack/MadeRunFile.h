// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>

#include "RunFile/ZPKPageMemory.h"
#include "RunFile/ZPKRunFile.h"
#include "Tools/zpkpack/MadePackage.h"

namespace zpk_packager {

/// The bundle in a run file, read where it lies.
class MadeRunFile : public MadePackage {
public:
    explicit MadeRunFile(const std::string& path);

    std::size_t read(const Item& file, std::uint64_t offset, void* bytes, std::size_t count) override;

private:
    const ZPKPageMemory& plainBlock(std::size_t index);

    ZPKRunFile m_file;
    std::unordered_map<std::string, std::size_t> m_entries;  ///< By the path of their items.
    /// The block that was read last, since the next file mostly lies in it, too.
    std::size_t m_blockIndex = 0;
    std::optional<ZPKPageMemory> m_block;
};

}  // namespace zpk_packager
