// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

namespace zpk_packager {

/// Which names were met, in eight bytes a name. Where there are more names than fit, those of one part of all
/// are kept, and who uses this goes through the names once for each part:
///
///     do { every name: add(); sort(); lacks() or doubled() } while (nextPart());
///
/// Two different names count as one in one case of 2^64.
class NameHashes {
public:
    static constexpr std::size_t kUsualMost = std::size_t{2} << 20;

    explicit NameHashes(std::size_t most = kUsualMost) : m_most(most) {}

    static std::uint64_t hashOf(std::string_view name);

    /// Keeps the hash of a name, or any other one, if it is of this part.
    void add(std::uint64_t hash);

    /// After the last one.
    void sort();

    /// Whether it is of this part and was not added.
    bool lacks(std::uint64_t hash) const;

    /// Those that were added more than once, each once and in order; not more than `most` of them.
    std::vector<std::uint64_t> doubled(std::size_t most) const;

    /// False when all parts are done.
    bool nextPart();

private:
    bool isOfPart(std::uint64_t hash) const { return hash % m_parts == m_part; }

    std::size_t m_most;
    std::uint64_t m_parts = 1;
    std::uint64_t m_part = 0;
    /// In pieces: one that grows as a whole would for a moment be there twice.
    std::deque<std::uint64_t> m_hashes;
};

}  // namespace zpk_packager
