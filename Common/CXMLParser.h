// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace varno_zpk {

class CXMLDocument;

/// Reads and writes XML trees. One process-wide parser serves the document factories and writers;
/// it keeps nothing between calls. Main thread only.
class CXMLParser {
public:
    CXMLParser() = default;
    CXMLParser(const CXMLParser&) = delete;
    CXMLParser& operator=(const CXMLParser&) = delete;
    virtual ~CXMLParser();

    /// A new document of the caller's; null when the file cannot be read or is malformed.
    virtual CXMLDocument* CreateXMLDocumentWithPath(const char* path) = 0;
    /// A new document of the caller's from UTF-8 text; null when the text is malformed.
    virtual CXMLDocument* CreateXMLDocumentWithXMLContents(const char* xml) = 0;
    /// Replaces the file as a whole; a failure goes unreported and leaves the old file.
    virtual void WriteXMLDocumentToFile(CXMLDocument* doc, const char* path) = 0;
    virtual void WriteXMLDocumentToString(CXMLDocument* doc, std::string& outXML) = 0;

    /// The process-wide parser, made on first use.
    static CXMLParser* GetDefaultParser();
    /// Deletes the process-wide parser; the next use makes a new one.
    static void Finalize();

protected:
    static CXMLParser* s_DefaultParser;
};

}  // namespace varno_zpk
