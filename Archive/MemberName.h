// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zpk_archive {

/// Splits a member's name into the components of a path below the folder that is written. "." and
/// doubled slashes vanish, so the folder itself ("." or "./") gives none.
/// Throws MemberFailure when the name is empty, absolute, holds "..", or has an overlong component.
std::vector<std::string> splitMemberName(std::string_view name);

}  // namespace zpk_archive
