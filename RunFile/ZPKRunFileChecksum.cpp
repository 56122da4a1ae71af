// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "RunFile/ZPKRunFileChecksum.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

struct ZPKRunFileChecksum::State {
    XXH3_state_t hash;
};

ZPKRunFileChecksum::ZPKRunFileChecksum() : m_state(std::make_unique<State>()) {
    XXH3_64bits_reset(&m_state->hash);
}

ZPKRunFileChecksum::~ZPKRunFileChecksum() = default;

void ZPKRunFileChecksum::add(std::string_view bytes) {
    XXH3_64bits_update(&m_state->hash, bytes.data(), bytes.size());
}

std::uint64_t ZPKRunFileChecksum::value() const {
    return XXH3_64bits_digest(&m_state->hash);
}

std::uint64_t ZPKRunFileChecksum::of(std::string_view bytes) {
    return XXH3_64bits(bytes.data(), bytes.size());
}
