// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zpk_fuzz {

/// Changes a plain archive in the octal form by one of its members: has it again elsewhere, leaves it out,
/// gives it another's name, kind or identity, or other contents. Bytes that are changed at random mostly
/// leave no archive behind them. False when the bytes do not begin with two members, or the archive would be
/// longer than `most`; they stay as they are then.
bool mutateMembers(std::vector<std::uint8_t>& plain, std::size_t most, unsigned seed);

}  // namespace zpk_fuzz
