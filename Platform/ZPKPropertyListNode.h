// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Platform/ZPKPropertyList.h"

/// What is kept of a property list's root: values of other kinds than strings and arrays are known
/// to be there, and nothing more.
struct ZPKPropertyList::Node {
    struct Other {};
    /// The strings of an array, other elements left out.
    using Strings = std::vector<std::string>;
    using Value = std::variant<Other, std::string, Strings>;

    /// Ordered and not hashed: no list can make a search in it slow.
    std::map<std::string, Value> values;

    /// The text form in UTF-8 without a byte order mark; nothing when its syntax is wrong, and then
    /// `outErrorAt`, unless null, is the byte at which the reader gave up. `outKeys`, unless null, is given
    /// each key of the root as often as it is there.
    static std::optional<Node> fromText(std::string_view text, std::size_t* outErrorAt = nullptr,
                                        std::vector<KeyPlace>* outKeys = nullptr);

    /// The XML form in UTF-8; nothing when it is malformed or its root is no dictionary.
    static std::optional<Node> fromXML(std::string_view text);

    /// The binary form; nothing when it is malformed or its root is no dictionary.
    static std::optional<Node> fromBinary(std::string_view bytes);

    /// Deeper lists are taken for malformed, so that no reader runs out of stack.
    static constexpr std::size_t kDeepestNesting = 128;
    /// The same for more keys: what the library takes for each grows with those before it.
    static constexpr std::size_t kMostKeys = 30000;
};
