// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/LinkTable.h"

#include <algorithm>

#include "Archive/Member.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kCostLimit = std::size_t{6} << 20;

}  // namespace

LinkTable::Key LinkTable::keyOf(const Member& member) {
    return {member.device, member.inode, member.modifiedSeconds, member.mode};
}

LinkTable::File* LinkTable::find(const Member& member) {
    if (member.linkCount <= 1) {
        return nullptr;
    }
    const auto found = m_files.find(keyOf(member));
    return found == m_files.end() ? nullptr : &found->second;
}

void LinkTable::remember(const Member& member, std::string name, const FileIdentity& identity) {
    if (member.linkCount <= 1) {
        return;
    }
    File file{std::move(name), identity, member.size, member.linkCount - 1};
    const std::size_t cost = costOf(file);
    if (m_cost + cost > kCostLimit) {
        forgetAll();
    }
    const auto [place, isNew] = m_files.try_emplace(keyOf(member));
    m_cost += cost - (isNew ? 0 : costOf(place->second));
    place->second = std::move(file);
}

void LinkTable::preferName(File& file, const std::string& name) {
    if (name.size() < file.name.size()) {
        m_cost -= file.name.size() - name.size();
        file.name = name;
    }
}

void LinkTable::countName(const Member& member, File& file) {
    if (--file.namesToCome == 0) {
        m_cost -= costOf(file);
        m_files.erase(keyOf(member));
    }
}

void LinkTable::forgetAll() {
    // What is lost of most archives is nothing: the data come with each name, or the names close together.
    m_hasForgottenEmptyFiles =
        m_hasForgottenEmptyFiles ||
        std::any_of(m_files.begin(), m_files.end(), [](const auto& item) { return item.second.size == 0; });
    m_files.clear();
    m_cost = 0;
}

}  // namespace zpk_archive
