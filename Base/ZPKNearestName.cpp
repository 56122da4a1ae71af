// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKNearestName.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace {

constexpr std::size_t kLongestWord = 64;

std::string inLowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    });
    return lower;
}

/// How many letters have to be changed, put in, taken out or exchanged with the next one.
std::size_t distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> before(other.size() + 1);
    std::vector<std::size_t> above(other.size() + 1);
    std::vector<std::size_t> row(other.size() + 1);
    for (std::size_t column = 0; column <= other.size(); ++column) {
        row[column] = column;
    }
    for (std::size_t line = 1; line <= one.size(); ++line) {
        before.swap(above);
        above.swap(row);
        row[0] = line;
        for (std::size_t column = 1; column <= other.size(); ++column) {
            const bool isSame = one[line - 1] == other[column - 1];
            row[column] =
                std::min({above[column] + 1, row[column - 1] + 1, above[column - 1] + (isSame ? 0U : 1U)});
            if (line > 1 && column > 1 && one[line - 1] == other[column - 2] &&
                one[line - 2] == other[column - 1]) {
                row[column] = std::min(row[column], before[column - 2] + 1);
            }
        }
    }
    return row[other.size()];
}

}  // namespace

std::string_view ZPKNearestName::among(const std::vector<std::string_view>& known, std::string_view word) {
    if (word.size() > kLongestWord) {
        return {};
    }
    const std::string lowerWord = inLowerCase(word);
    std::string_view nearest;
    std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
    for (const std::string_view name : known) {
        if (name.size() > kLongestWord) {
            continue;
        }
        const std::size_t difference = distance(lowerWord, inLowerCase(name));
        if (difference < least) {
            least = difference;
            nearest = name;
        }
    }
    return nearest;
}
