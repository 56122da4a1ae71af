// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLParser.h"

#include "Common/CExpatXMLParser.h"

namespace varno_zpk {

CXMLParser* CXMLParser::s_DefaultParser = nullptr;

CXMLParser::~CXMLParser() = default;

CXMLParser* CXMLParser::GetDefaultParser() {
    if (s_DefaultParser == nullptr) {
        s_DefaultParser = new CExpatXMLParser;
    }
    return s_DefaultParser;
}

void CXMLParser::Finalize() {
    delete s_DefaultParser;
    s_DefaultParser = nullptr;
}

}  // namespace varno_zpk
