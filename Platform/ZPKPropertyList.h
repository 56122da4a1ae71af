// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A property list whose root is a dictionary, read from a file: the XML form, the binary form, or
/// the text form (`"key" = "value";`, UTF-8 or UTF-16 with a byte order mark, comments). Immutable;
/// may be read from any thread.
class ZPKPropertyList {
public:
    /// Nothing when the file cannot be read, is larger than 64 MiB, is malformed, nested more than 128
    /// deep or, in the XML or binary form, holds more than 30,000 keys, or its root is no dictionary. Never
    /// waits on a FIFO or a device.
    static std::optional<ZPKPropertyList> dictionaryWithContentsOfFile(const std::string& path);

    /// The same for the bytes of such a file.
    static std::optional<ZPKPropertyList> dictionaryWithBytes(std::string_view bytes);

    /// A key of the root, and the byte at which it begins.
    struct KeyPlace {
        std::string key;
        std::size_t offset;
    };

    /// The text form alone, in UTF-8 without a byte order mark. Where it is malformed, `outErrorAt` is the
    /// byte at which the reader gave up. `outKeys`, unless null, is given each key as often as it is there.
    static std::optional<ZPKPropertyList> dictionaryWithText(std::string_view text, std::size_t& outErrorAt,
                                                             std::vector<KeyPlace>* outKeys = nullptr);

    ZPKPropertyList(ZPKPropertyList&&) noexcept;
    ZPKPropertyList& operator=(ZPKPropertyList&&) noexcept;
    ~ZPKPropertyList();

    /// The keys of the root, sorted.
    std::vector<std::string> keys() const;

    /// The string under `key` of the root, in UTF-8; nothing when there is none or it is no string.
    std::optional<std::string> stringForKey(const std::string& key) const;

    /// The strings of the array under `key` of the root, other elements left out; nothing when the
    /// key is absent or holds no array.
    std::optional<std::vector<std::string>> stringArrayForKey(const std::string& key) const;

    /// The representation.
    struct Node;

private:
    explicit ZPKPropertyList(std::unique_ptr<Node> root);
    std::unique_ptr<Node> m_root;
};
