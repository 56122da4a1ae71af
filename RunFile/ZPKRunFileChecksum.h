// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

/// The checksum that all parts of a run file have. It finds damage, not forgery. One thread uses one.
class ZPKRunFileChecksum {
public:
    ZPKRunFileChecksum();
    ~ZPKRunFileChecksum();
    ZPKRunFileChecksum(const ZPKRunFileChecksum&) = delete;
    ZPKRunFileChecksum& operator=(const ZPKRunFileChecksum&) = delete;

    void add(std::string_view bytes);

    /// Of all bytes added so far.
    std::uint64_t value() const;

    static std::uint64_t of(std::string_view bytes);

private:
    struct State;
    std::unique_ptr<State> m_state;
};
