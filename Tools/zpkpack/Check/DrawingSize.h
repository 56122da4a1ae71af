// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLElement.h"

namespace zpk_packager {

/// How large a drawing is in units of its own; both 0 where it does not say.
struct DrawingSize {
    double width = 0;
    double height = 0;

    /// By the root's `viewBox`, else by its `width` and `height`.
    static DrawingSize of(const varno_zpk::CXMLElement& root);

    /// For people.
    std::string text() const;
};

}  // namespace zpk_packager
