// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLDocument.h"

#include <memory>

#include "Common/CXMLElement.h"
#include "Common/CXMLParser.h"

namespace varno_zpk {

CXMLDocument::~CXMLDocument() {
    delete m_rootElement;
}

void CXMLDocument::InitWithRootElement(CXMLElement* root) {
    InitWithKind(XMLKIND_DOCUMENT);
    m_rootElement = root;
}

void CXMLDocument::SetRootElement(CXMLNode* root) {
    if (root == m_rootElement) {
        return;
    }
    delete m_rootElement;
    m_rootElement = dynamic_cast<CXMLElement*>(root);
}

CXMLNode* CXMLDocument::Clone() const {
    std::unique_ptr<CXMLElement> root;
    if (m_rootElement != nullptr) {
        root.reset(static_cast<CXMLElement*>(m_rootElement->Clone()));
    }
    CXMLDocument* document = CreateDocumentWithRootElement(root.get());
    static_cast<void>(root.release());
    return document;
}

void CXMLDocument::WriteToFile(const char* path) {
    CXMLParser::GetDefaultParser()->WriteXMLDocumentToFile(this, path);
}

void CXMLDocument::WriteXMLContents(std::string& outXML) {
    CXMLParser::GetDefaultParser()->WriteXMLDocumentToString(this, outXML);
}

}  // namespace varno_zpk
