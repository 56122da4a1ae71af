// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Common/CXMLDocument.h"

namespace varno_zpk {

/// Turns trees into XML text.
class CXMLSerializer {
public:
    CXMLSerializer() = delete;

    /// UTF-8 text with its declaration: elements on lines of their own, indented by four blanks a
    /// level, but an element that holds text stays on one line with everything in it, so that
    /// nothing is added to its content. Elements without children are written in the short form. What a
    /// reader would change becomes a reference: carriage returns, which it takes for line feeds, tabs
    /// and line feeds in attributes, which it takes for blanks, and the first character of a text of
    /// nothing but white space beside an element, which it takes for indentation.
    static std::string Serialize(const CXMLDocument& document);
};

}  // namespace varno_zpk
