// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The names of a folder in the order of their bytes, in bounded memory. Whoever reads the folder offers all
/// its names, in whatever order they come; the first ones are kept, as many as fit. When those are taken, the
/// folder is read again for the next ones. One thread at a time uses one.
class ZPKNameBatch {
public:
    static constexpr std::size_t kUsualLimit = std::size_t{6} << 20;

    /// `limit` is in bytes of memory. One name is always kept.
    explicit ZPKNameBatch(std::size_t limit = kUsualLimit) : m_limit(limit) {}

    /// Before the folder is read.
    void begin();
    void offer(std::string_view name);
    /// After the last name.
    void end();

    bool isEmpty() const { return m_names.empty(); }

    /// Whether the folder is to be read again when the names that are left are taken.
    bool isPart() const { return m_isPart; }

    /// The next name; there is one.
    std::string take();

    /// Gives up the names that are left; reading the folder again brings them back.
    void forget();

    std::size_t memory() const { return m_memory; }

private:
    std::size_t m_limit;
    /// While names are offered a heap with the last one first, then sorted from last to first.
    std::vector<std::string> m_names;
    std::size_t m_memory = 0;
    std::string m_taken;
    bool m_isPart = false;
};
