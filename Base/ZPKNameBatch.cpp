// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKNameBatch.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace {

/// What the heap keeps beside the bytes of a name.
constexpr std::size_t kOverhead = sizeof(std::string) + 32;

}  // namespace

void ZPKNameBatch::begin() {
    m_names.clear();
    m_memory = 0;
    m_isPart = false;
}

void ZPKNameBatch::offer(std::string_view name) {
    if (name <= m_taken) {
        return;
    }
    const bool isFull = m_memory + name.size() + kOverhead > m_limit;
    if (isFull && !m_names.empty() && name > m_names.front()) {
        m_isPart = true;
        return;
    }
    m_names.emplace_back(name);
    std::push_heap(m_names.begin(), m_names.end());
    m_memory += name.size() + kOverhead;
    while (m_memory > m_limit && m_names.size() > 1) {
        std::pop_heap(m_names.begin(), m_names.end());
        m_memory -= m_names.back().size() + kOverhead;
        m_names.pop_back();
        m_isPart = true;
    }
}

void ZPKNameBatch::end() {
    std::sort(m_names.begin(), m_names.end(), std::greater<>());
}

std::string ZPKNameBatch::take() {
    m_taken = std::move(m_names.back());
    m_names.pop_back();
    m_memory -= m_taken.size() + kOverhead;
    return m_taken;
}

void ZPKNameBatch::forget() {
    m_isPart = m_isPart || !m_names.empty();
    m_names.clear();
    m_names.shrink_to_fit();
    m_memory = 0;
}
