// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

namespace varno_zpk {

/// What a node is. The numbers leave room for the kinds that the tree does not model (4 namespace,
/// 5 processing instruction, 6 comment).
enum XMLKIND : std::uint32_t {
    XMLKIND_INVALID = 0,
    XMLKIND_DOCUMENT = 1,
    XMLKIND_ELEMENT = 2,
    XMLKIND_ATTRIBUTE = 3,
    XMLKIND_TEXT = 7,
};

}  // namespace varno_zpk
