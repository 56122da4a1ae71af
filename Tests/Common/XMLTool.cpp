// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Reads the XML file that it is given, and says by its exit status whether there was a document.

#include <memory>

#include "Common/CExpatXMLParser.h"

int main(int count, char** arguments) {
    if (count != 2) {
        return 64;
    }
    varno_zpk::CExpatXMLParser parser;
    const std::unique_ptr<varno_zpk::CXMLDocument> document(parser.CreateXMLDocumentWithPath(arguments[1]));
    return document != nullptr ? 0 : 1;
}
