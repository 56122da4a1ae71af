// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "Tools/zpkpack/Check/DescriptionText.h"
#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// The names that the launcher knows in one element of a description.
class KnownNames {
public:
    using Names = std::vector<std::string_view>;
    using ElementVisitor = std::function<void(const varno_zpk::CXMLElement& child)>;

    KnownNames(Names attributes, Names children)
        : m_attributes(std::move(attributes)), m_children(std::move(children)) {}

    /// Reports the attributes and child elements of `element` that are passed over, and calls `visit` with
    /// each of the others, in the document's order.
    void check(DescriptionText& text, const varno_zpk::CXMLElement& element, FindingList& findings,
               const ElementVisitor& visit = {}) const;

private:
    void checkAttributes(DescriptionText& text, const varno_zpk::CXMLElement& element,
                         FindingList& findings) const;

    Names m_attributes;
    Names m_children;
};

}  // namespace zpk_packager
