// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// What can be read as an AppleDouble file is the same after it was written again.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Archive/AppleDouble.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zpk_archive;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    constexpr std::size_t kTimes = 32;
    const zpk_fuzz::MemoryBudget budget(zpk_fuzz::MemoryBudget::forInput(size, kTimes));
    const std::optional<AttributeMap> attributes = decodeAppleDouble(input);
    if (!attributes) {
        return 0;
    }
    for (const auto& [name, value] : *attributes) {
        zpk_fuzz::require(!name.empty() && name.size() <= kAttributeNameLimit, "a name beyond the bound");
        zpk_fuzz::require(name.find('\0') == std::string::npos, "a name with a null character");
    }
    const std::string written = encodeAppleDouble(*attributes);
    zpk_fuzz::require(decodeAppleDouble(written) == attributes, "written and read again it is another");
    return 0;
}
