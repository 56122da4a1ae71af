// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace zpk_packager {

/// The names of one folder that some file systems take for one.
class FolderNames {
public:
    FolderNames() = delete;

    enum class Likeness {
        /// They differ in capitals.
        Case,
        /// They are spelled alike, and their Unicode forms differ.
        Form,
    };

    /// The two names by their place in the list, the earlier one first.
    using Visitor = std::function<void(std::size_t one, std::size_t other, Likeness likeness)>;

    /// Gives `visit` each name that is like an earlier one. Names that are no UTF-8 are like no other.
    static void findAlike(const std::vector<std::string>& names, const Visitor& visit);
};

}  // namespace zpk_packager
