// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Wildcards against a table that says of each beginning of the pattern and of the text whether they match.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Common/WildCard.h"
#include "Fuzz/Require.h"

namespace {

bool matches(std::string_view pattern, std::string_view text) {
    std::vector<bool> above(text.size() + 1, false);
    above[0] = true;
    for (const char sign : pattern) {
        std::vector<bool> row(text.size() + 1, false);
        row[0] = sign == '*' && above[0];
        for (std::size_t at = 1; at <= text.size(); ++at) {
            row[at] = sign == '*' ? above[at] || row[at - 1]
                                  : above[at - 1] && (sign == '?' || sign == text[at - 1]);
        }
        above = row;
    }
    return above[text.size()];
}

}  // namespace

/// The pattern is what stands before the first line feed, the text what follows.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLongest = 2000;
    const std::string input(reinterpret_cast<const char*>(data), std::min(size, kLongest));
    const std::size_t middle = std::min(input.find('\n'), input.size());
    const std::string pattern = std::string(input.substr(0, middle).c_str());
    const std::string text = std::string(input.substr(std::min(middle + 1, input.size())).c_str());
    zpk_fuzz::require(varno_zpk::WildCard::Match(pattern, text) == matches(pattern, text),
                      "the reference says otherwise");
    return 0;
}
