// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace zpk_archive {

/// Supplies the bytes of an archive that is no file by itself, from the first to the last: puts up to
/// `count` of them at `bytes` and says how many; 0 at the end. Throws `std::exception` with the reason when
/// it cannot. Called from one thread at a time, mostly not the one that it was handed over by.
using ByteSource = std::function<std::size_t(std::uint8_t* bytes, std::size_t count)>;

}  // namespace zpk_archive
