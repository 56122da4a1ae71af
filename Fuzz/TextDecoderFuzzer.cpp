// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Decodes the input, whole and in pieces: the same must come of it, UTF-8, and no more than the input is
// worth.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Base/ZPKTextDecoder.h"
#include "Base/ZPKUnicode.h"
#include "Fuzz/MemoryBudget.h"
#include "Fuzz/Require.h"

namespace {

using zpk_fuzz::require;

/// The text up to what is refused, and whether all of it was read.
struct Decoded {
    std::string text;
    bool isRead;
    bool isWhole;
    bool operator==(const Decoded&) const = default;
};

Decoded decoded(std::string_view encoding, std::string_view bytes, std::size_t size) {
    const std::unique_ptr<ZPKTextDecoder> decoder = ZPKTextDecoder::forEncoding(encoding);
    Decoded result{"", true, true};
    for (; result.isRead && !bytes.empty(); bytes.remove_prefix(std::min(size, bytes.size()))) {
        result.isRead = decoder->decode(bytes.substr(0, size), result.text);
    }
    result.isWhole = result.isRead && decoder->isBetweenCharacters();
    return result;
}

}  // namespace

/// The encoding's name is what stands before the first line feed, the text what follows.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The tables of two decoders, and three times the text.
    constexpr std::size_t kTables = std::size_t{1} << 20;
    const zpk_fuzz::MemoryBudget budget(kTables + zpk_fuzz::MemoryBudget::forInput(size, 20));
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view encoding = input.substr(0, input.find('\n'));
    const std::string_view bytes = input.substr(std::min(encoding.size() + 1, size));
    if (ZPKTextDecoder::forEncoding(encoding) == nullptr) {
        return 0;
    }
    const Decoded whole = decoded(encoding, bytes, std::string_view::npos);
    require(ZPKUnicode::isUTF8(whole.text), "the text is no UTF-8");
    require(whole.text.size() <= 3 * bytes.size(), "the text is longer than three times the input");
    require(decoded(encoding, bytes, 1 + size % 5) == whole, "in pieces it is another");
    return 0;
}
