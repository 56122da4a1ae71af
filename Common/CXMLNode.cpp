// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLNode.h"

#include <memory>

#include "Common/CXMLAttribute.h"
#include "Common/CXMLDocument.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLParser.h"
#include "Common/CXMLText.h"

namespace varno_zpk {

const std::string CXMLNode::s_NullString;

CXMLNode::~CXMLNode() = default;

void CXMLNode::SetName(const char*) {}

const char* CXMLNode::GetName() const {
    return s_NullString.c_str();
}

const std::string& CXMLNode::GetNameString() const {
    return s_NullString;
}

void CXMLNode::SetStringValue(const char*) {}

const char* CXMLNode::GetStringValue() const {
    return s_NullString.c_str();
}

const std::string& CXMLNode::GetStringValueString() const {
    return s_NullString;
}

unsigned int CXMLNode::GetIndex() const {
    return m_index;
}

unsigned int CXMLNode::GetChildCount() const {
    return 0;
}

CXMLNode* CXMLNode::GetChildAtIndex(unsigned int) {
    return nullptr;
}

const CXMLDocument* CXMLNode::GetRootDocument() const {
    const CXMLNode* node = this;
    while (node != nullptr && node->m_kind != XMLKIND_DOCUMENT) {
        node = node->m_parent;
    }
    return static_cast<const CXMLDocument*>(node);
}

CXMLDocument* CXMLNode::CreateDocumentWithPath(const char* path) {
    return CXMLParser::GetDefaultParser()->CreateXMLDocumentWithPath(path);
}

CXMLDocument* CXMLNode::CreateDocumentWithXMLContents(const char* xml) {
    return CXMLParser::GetDefaultParser()->CreateXMLDocumentWithXMLContents(xml);
}

CXMLDocument* CXMLNode::CreateDocumentWithRootElement(CXMLElement* root) {
    auto document = std::make_unique<CXMLDocument>();
    document->InitWithRootElement(root);
    return document.release();
}

CXMLElement* CXMLNode::CreateElementWithName(const char* name) {
    auto element = std::make_unique<CXMLElement>();
    element->InitWithName(name);
    return element.release();
}

CXMLElement* CXMLNode::CreateElementWithNameWithURI(const char* name, const char* uri) {
    auto element = std::make_unique<CXMLElement>();
    element->InitWithNameWithURI(name, uri);
    return element.release();
}

CXMLElement* CXMLNode::CreateElementWithNameWithStringValue(const char* name, const char* value) {
    auto element = std::make_unique<CXMLElement>();
    element->InitWithNameWithStringValue(name, value);
    return element.release();
}

CXMLAttribute* CXMLNode::CreateAttributeWithNameWithStringValue(const char* name, const char* value) {
    auto attribute = std::make_unique<CXMLAttribute>();
    attribute->InitWithKind(XMLKIND_ATTRIBUTE);
    attribute->SetName(name);
    attribute->SetStringValue(value);
    return attribute.release();
}

CXMLText* CXMLNode::CreateTextWithStringValue(const char* value) {
    auto text = std::make_unique<CXMLText>();
    text->InitWithKind(XMLKIND_TEXT);
    text->SetStringValue(value);
    return text.release();
}

}  // namespace varno_zpk
