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
    /// nothing is added to its content. Elements without children are written in the short form. A
    /// carriage return becomes a reference, since a reader would take it for a line feed.
    static std::string Serialize(const CXMLDocument& document);
};

}  // namespace varno_zpk
