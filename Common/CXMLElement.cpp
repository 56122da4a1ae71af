// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLElement.h"

#include <algorithm>
#include <cassert>
#include <string_view>

#include "Common/CXMLAttribute.h"
#include "Common/CXMLText.h"

namespace varno_zpk {

namespace {

void deleteNodes(std::vector<CXMLNode*>& nodes) {
    for (const CXMLNode* node : nodes) {
        delete node;
    }
    nodes.clear();
}

bool isElementNamed(const CXMLNode& node, std::string_view name) {
    return node.GetKind() == XMLKIND_ELEMENT && node.GetNameString() == name;
}

}  // namespace

CXMLElement::~CXMLElement() {
    deleteNodes(m_children);
    deleteNodes(m_attributes);
}

void CXMLElement::SetName(const char* name) {
    m_name = name;
}

const char* CXMLElement::GetName() const {
    return m_name.c_str();
}

const std::string& CXMLElement::GetNameString() const {
    return m_name;
}

void CXMLElement::SetStringValue(const char* value) {
    SetText(value);
}

const char* CXMLElement::GetStringValue() const {
    return GetText();
}

const std::string& CXMLElement::GetStringValueString() const {
    return GetTextString();
}

unsigned int CXMLElement::GetChildCount() const {
    return static_cast<unsigned int>(m_children.size());
}

CXMLNode* CXMLElement::GetChildAtIndex(unsigned int index) {
    return index < m_children.size() ? m_children[index] : nullptr;
}

CXMLNode* CXMLElement::Clone() const {
    std::unique_ptr<CXMLElement> copy(CreateElementWithNameWithURI(m_name.c_str(), m_uri.c_str()));
    for (const CXMLNode* child : m_children) {
        std::unique_ptr<CXMLNode> childCopy(child->Clone());
        copy->AddChild(childCopy.get());
        static_cast<void>(childCopy.release());
    }
    for (const CXMLNode* attribute : m_attributes) {
        std::unique_ptr<CXMLNode> attributeCopy(attribute->Clone());
        copy->AddAttribute(attributeCopy.get());
        static_cast<void>(attributeCopy.release());
    }
    return copy.release();
}

void CXMLElement::InitWithName(const char* name) {
    InitWithKind(XMLKIND_ELEMENT);
    SetName(name);
}

void CXMLElement::InitWithNameWithURI(const char* name, const char* uri) {
    InitWithName(name);
    m_uri = uri;
}

void CXMLElement::InitWithNameWithStringValue(const char* name, const char* value) {
    InitWithName(name);
    SetStringValue(value);
}

void CXMLElement::SetText(const char* text) {
    assert(text);
    if (CXMLNode* existing = GetFirstChildText()) {
        existing->SetStringValue(text);
        return;
    }
    std::unique_ptr<CXMLText> added(CreateTextWithStringValue(text));
    AddChild(added.get());
    static_cast<void>(added.release());
}

const char* CXMLElement::GetText() const {
    return GetTextString().c_str();
}

const std::string& CXMLElement::GetTextString() const {
    const CXMLNode* text = GetFirstChildText();
    return text != nullptr ? text->GetStringValueString() : s_NullString;
}

CXMLNode* CXMLElement::GetFirstChildText() const {
    const auto found = std::find_if(m_children.begin(), m_children.end(),
                                    [](const CXMLNode* child) { return child->GetKind() == XMLKIND_TEXT; });
    return found != m_children.end() ? *found : nullptr;
}

void CXMLElement::SetInnerText(const char* text) {
    assert(text);
    // Made first: the text may belong to one of the children that go.
    std::unique_ptr<CXMLText> added(CreateTextWithStringValue(text));
    RemoveAllChildren();
    AddChild(added.get());
    static_cast<void>(added.release());
}

void CXMLElement::GetInnerText(std::string& outText) {
    outText.clear();
    AppendInnerText(outText);
}

void CXMLElement::AppendInnerText(std::string& ioText) {
    for (CXMLNode* child : m_children) {
        if (child->GetKind() == XMLKIND_TEXT) {
            ioText += child->GetStringValueString();
        } else if (child->GetKind() == XMLKIND_ELEMENT) {
            static_cast<CXMLElement*>(child)->AppendInnerText(ioText);
        }
    }
}

void CXMLElement::AddChild(CXMLNode* inChild) {
    assert(inChild);
    m_children.push_back(inChild);
    inChild->SetParent(this);
}

void CXMLElement::RemoveAllChildren() {
    deleteNodes(m_children);
}

void CXMLElement::AddAttribute(CXMLNode* inAtt) {
    // clang-format off
    assert(dynamic_cast<CXMLAttribute*>(inAtt));
    assert(inAtt->GetKind()==XMLKIND_ATTRIBUTE);
    // clang-format on
    RemoveAttributeForName(inAtt->GetName());
    m_attributes.push_back(inAtt);
    inAtt->SetParent(this);
}

void CXMLElement::AddNewAttribute(std::unique_ptr<CXMLAttribute> attribute) {
    m_attributes.push_back(attribute.get());
    attribute.release()->SetParent(this);
}

CXMLNode* CXMLElement::GetAttributeForName(const char* inName) {
    assert(inName);
    const std::string_view name = inName;
    const auto found =
        std::find_if(m_attributes.begin(), m_attributes.end(),
                     [name](const CXMLNode* attribute) { return attribute->GetNameString() == name; });
    return found != m_attributes.end() ? *found : nullptr;
}

void CXMLElement::RemoveAttributeForName(const char* name) {
    assert(name);
    const CXMLNode* attribute = GetAttributeForName(name);
    if (attribute != nullptr) {
        m_attributes.erase(std::find(m_attributes.begin(), m_attributes.end(), attribute));
        delete attribute;
    }
}

void CXMLElement::RemoveAllAttributes() {
    deleteNodes(m_attributes);
}

void CXMLElement::GetElementsForName(const char* inName, std::vector<CXMLNode*>& outElements) {
    assert(inName);
    const std::string_view name = inName;
    outElements.clear();
    std::copy_if(m_children.begin(), m_children.end(), std::back_inserter(outElements),
                 [name](const CXMLNode* child) { return isElementNamed(*child, name); });
}

CXMLElement* CXMLElement::GetFirstElementForName(const char* inName) {
    assert(inName);
    const std::string_view name = inName;
    const auto found = std::find_if(m_children.begin(), m_children.end(),
                                    [name](const CXMLNode* child) { return isElementNamed(*child, name); });
    return found != m_children.end() ? static_cast<CXMLElement*>(*found) : nullptr;
}

}  // namespace varno_zpk
