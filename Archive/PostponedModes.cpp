// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/PostponedModes.h"

#include <iterator>

namespace zpk_archive {

namespace {

/// Bytes that all of it takes, and one item without its path.
constexpr std::size_t kCostLimit = std::size_t{6} << 20;
constexpr std::size_t kItemSize = 144;

}  // namespace

void PostponedModes::add(const MemberPath& path, const Item& item) {
    const std::string text = path.text();
    if (m_cost > kCostLimit) {
        // The folders on the way are about to be written to.
        applyAllBut(text);
        if (m_cost > kCostLimit / 2) {
            applyAllBut("");
        }
    }
    const auto [place, isNew] = m_items.insert_or_assign(text, item);
    m_cost += isNew ? kItemSize + text.size() : 0;
}

void PostponedModes::forget(const MemberPath& path) {
    if (const auto item = m_items.find(path.text()); item != m_items.end()) {
        m_cost -= kItemSize + item->first.size();
        m_items.erase(item);
    }
}

void PostponedModes::applyAllBut(const std::string& wayThatStays) {
    // Backwards, so that what lies deeper comes first: a folder's own mode may forbid to enter it.
    for (auto next = m_items.end(); next != m_items.begin();) {
        const auto item = std::prev(next);
        const bool stays = wayThatStays.starts_with(item->first) && wayThatStays[item->first.size()] == '/';
        if (stays) {
            next = item;
            continue;
        }
        m_apply(MemberPath(item->first), item->second);
        m_cost -= kItemSize + item->first.size();
        next = m_items.erase(item);
    }
}

}  // namespace zpk_archive
