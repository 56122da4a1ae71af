// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

#include "Tools/zpkpack/Check/NameHashes.h"

namespace zpk_packager {

/// Names in one folder that some file systems take for one. The names of a whole package, or of one folder,
/// are added as they come; in bounded memory, so that they are gone through again where some are alike.
class FolderNames {
public:
    enum class Likeness {
        /// They differ in capitals.
        Case,
        /// They are spelled alike, and their Unicode forms differ.
        Form,
    };

    /// Two paths that differ in their last component; `one` is the earlier one in the order of bytes.
    using Visitor = std::function<void(const std::string& one, const std::string& other, Likeness likeness)>;

    using Taker = std::function<void(const std::string& path)>;
    /// Gives all paths that were added once more, in any order.
    using Reader = std::function<void(const Taker& take)>;

    FolderNames() = default;
    /// Keeps at most so many hashes.
    explicit FolderNames(std::size_t most) : m_hashes(most) {}

    /// A name alone, or a path.
    void add(const std::string& path);

    /// After the last one: gives `visit` each name that is like another. Names that are no UTF-8 are like no
    /// other. Of very many alike names not all are looked at.
    void findAlike(const Reader& again, const Visitor& visit);

private:
    void findInPart(const Reader& again, const Visitor& visit);

    NameHashes m_hashes;
};

}  // namespace zpk_packager
