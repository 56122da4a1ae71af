// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/LinkTarget.h"

#include <algorithm>

namespace zpk_packager {

bool LinkTarget::climbsOutFrom(std::size_t depth) const {
    for (std::size_t start = 0; start < m_text.size();) {
        const std::size_t end = std::min(m_text.find('/', start), m_text.size());
        const std::string_view part = m_text.substr(start, end - start);
        if (part == ".." && depth == 0) {
            return true;
        }
        const bool isStep = !part.empty() && part != ".";
        depth = part == ".." ? depth - 1 : depth + (isStep ? 1 : 0);
        start = end + 1;
    }
    return false;
}

}  // namespace zpk_packager
