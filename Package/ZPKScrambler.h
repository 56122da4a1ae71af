// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Base/ZPKFailure.h"

/// The scrambling of package archives, which keeps other programs from opening them by mistake. Memory
/// use does not depend on the size. May be called from any thread.
class ZPKScrambler {
public:
    ZPKScrambler() = delete;

    struct Piece {
        std::uint64_t offset;
        std::uint64_t size;
    };

    /// Where the bytes of the plain archive lie in a scrambled one of `size` bytes, in the order of the
    /// former: for who reads it without a copy.
    static std::array<Piece, 2> piecesOfPlain(std::uint64_t size);

    /// Scrambles the plain archive `source` into `destination`, replacing any file there: the first
    /// 102400 bytes move to the end. A missing `source` fails and leaves an empty `destination`.
    static ZPKOutcome scramble(const std::string& source, const std::string& destination);

    /// Unscrambles `source` into `destination`: the last 102400 bytes move to the front. A file of
    /// 102400 bytes or fewer is copied as it is, and then an existing `destination` is kept, which
    /// counts as a failure; a larger one replaces it.
    static ZPKOutcome unscramble(const std::string& source, const std::string& destination);
};
