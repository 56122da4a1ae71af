// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

namespace varno_zpk {

/// Is told what the reader of a string table meets, in the file's order.
class IStringTableListener {
public:
    virtual ~IStringTableListener() = default;

    /// Where an entry stands, in bytes from the start of the file.
    struct EntryPlace {
        /// The first byte of the key.
        std::size_t key;
        /// What is behind the `=`, and the `;`: the value is between them, with all that is dropped of it.
        std::size_t value;
        std::size_t end;
    };

    virtual void OnEntry(const std::string& key, const std::string& value, const EntryPlace& place) = 0;

    /// A fault, in the words of the reports, that was noticed at the byte `offset` bytes from the start of
    /// the file.
    virtual void OnFault(const char* message, std::size_t offset) = 0;
};

}  // namespace varno_zpk
