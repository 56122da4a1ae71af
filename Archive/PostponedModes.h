// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>

#include "Archive/MemberPath.h"
#include "Archive/OpenFolder.h"

namespace zpk_archive {

/// The modes and times of things that have to wait for them, in bounded memory.
class PostponedModes {
public:
    struct Item {
        ModeAndTime modeAndTime;
        mode_t type = 0;
    };
    using Apply = std::function<void(const MemberPath& path, const Item& item)>;

    explicit PostponedModes(Apply apply) : m_apply(std::move(apply)) {}

    /// Applies others first when there are too many; those of the folders on the way to this one last.
    void add(const MemberPath& path, const Item& item);
    void forget(const MemberPath& path);
    void applyAll() { applyAllBut(""); }

private:
    void applyAllBut(const std::string& wayThatStays);

    Apply m_apply;
    /// By the path's text, in an order in which a folder comes before all that is in it.
    std::map<std::string, Item> m_items;
    std::size_t m_cost = 0;
};

}  // namespace zpk_archive
