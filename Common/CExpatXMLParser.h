// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "Common/CXMLDocument.h"
#include "Common/CXMLParser.h"
#include "Platform/ZPKFileHandle.h"

namespace varno_zpk {

/// The parser: Expat reads, `CXMLSerializer` writes.
class CExpatXMLParser : public CXMLParser {
public:
    CXMLDocument* CreateXMLDocumentWithPath(const char* path) override;
    CXMLDocument* CreateXMLDocumentWithXMLContents(const char* xml) override;
    void WriteXMLDocumentToFile(CXMLDocument* doc, const char* path) override;
    void WriteXMLDocumentToString(CXMLDocument* doc, std::string& outXML) override;

    /// The tree of a file that is open at its start, read in blocks of at most `blockSize` bytes; null
    /// when it cannot be read, is malformed or grows without end.
    static std::unique_ptr<CXMLDocument> CreateCXMLNodeWithFile(const ZPKFileHandle& file,
                                                                std::size_t blockSize);
    /// The tree of a text, which is UTF-8 whatever its own declaration says; null when malformed.
    static std::unique_ptr<CXMLDocument> CreateCXMLNodeWithText(std::string_view text);
};

}  // namespace varno_zpk
