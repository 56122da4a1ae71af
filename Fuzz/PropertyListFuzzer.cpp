// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Property lists in every form: whatever the bytes are, reading them ends, and within the stack.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/ZPKPropertyList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), length);
    if (const auto list = ZPKPropertyList::dictionaryWithBytes(text)) {
        static_cast<void>(list->stringForKey("CFBundleName"));
        static_cast<void>(list->stringArrayForKey("Varno Utilities"));
    }
    return 0;
}
