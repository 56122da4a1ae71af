// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/NameHashes.h"

#include <algorithm>
#include <functional>

namespace zpk_packager {

std::uint64_t NameHashes::hashOf(std::string_view name) {
    return std::hash<std::string_view>()(name);
}

void NameHashes::add(std::uint64_t hash) {
    if (!isOfPart(hash)) {
        return;
    }
    m_hashes.push_back(hash);
    // How many parts it takes is known when the first one has been gone through.
    while (m_part == 0 && m_hashes.size() > m_most) {
        m_parts *= 2;
        std::erase_if(m_hashes, [this](std::uint64_t each) { return !isOfPart(each); });
    }
}

void NameHashes::sort() {
    std::sort(m_hashes.begin(), m_hashes.end());
}

bool NameHashes::lacks(std::uint64_t hash) const {
    return isOfPart(hash) && !std::binary_search(m_hashes.begin(), m_hashes.end(), hash);
}

std::vector<std::uint64_t> NameHashes::doubled(std::size_t most) const {
    std::vector<std::uint64_t> found;
    for (auto at = m_hashes.begin(); found.size() < most; ++at) {
        at = std::adjacent_find(at, m_hashes.end());
        if (at == m_hashes.end()) {
            break;
        }
        if (found.empty() || found.back() != *at) {
            found.push_back(*at);
        }
    }
    return found;
}

bool NameHashes::nextPart() {
    m_hashes.clear();
    return ++m_part < m_parts;
}

}  // namespace zpk_packager
