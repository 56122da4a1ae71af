// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The table of a run file: what is taken is sound, and written again it is the same bytes.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"
#include "RunFile/ZPKRunFileTable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint64_t kDataSize = std::uint64_t{1} << 30;
    constexpr std::size_t kTimes = 64;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const zpk_fuzz::MemoryBudget budget(zpk_fuzz::MemoryBudget::forInput(size, kTimes));
    const ZPKResult<ZPKRunFileTable> table = ZPKRunFileTable::decoded(bytes, kDataSize, "input");
    if (!table) {
        return 0;
    }
    for (const ZPKRunFileEntry& entry : table->entries) {
        const std::string path = "/" + entry.path + "/";
        zpk_fuzz::require(path.find("/../") == std::string::npos && path.find("//") == std::string::npos,
                          "a path that leads elsewhere");
    }
    const ZPKResult<ZPKRunFileTable> again = ZPKRunFileTable::decoded(table->encoded(), kDataSize, "input");
    zpk_fuzz::require(static_cast<bool>(again) && again->encoded() == table->encoded(),
                      "written and read again it is another");
    return 0;
}
