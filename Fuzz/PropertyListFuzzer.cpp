// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Property lists in every form: whatever the bytes are, reading them ends, and within the stack.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"
#include "Platform/ZPKPropertyList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), length);
    constexpr std::size_t kTimes = 400;
    const zpk_fuzz::MemoryBudget budget(zpk_fuzz::MemoryBudget::forInput(length, kTimes));
    if (const auto list = ZPKPropertyList::dictionaryWithBytes(text)) {
        static_cast<void>(list->stringForKey("CFBundleName"));
        static_cast<void>(list->stringArrayForKey("Varno Utilities"));
    }
    std::size_t errorAt = 0;
    const bool isText = ZPKPropertyList::dictionaryWithText(text, errorAt).has_value();
    zpk_fuzz::require(isText || errorAt <= length, "an error behind the end");
    return 0;
}
