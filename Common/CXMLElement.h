// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/CXMLNode.h"

namespace varno_zpk {

/// A named node with attributes and children, both in document order and owned by the element.
/// Names are compared byte by byte. Null arguments are caught by assertions.
class CXMLElement : public CXMLNode {
public:
    CXMLElement() = default;
    ~CXMLElement() override;

    void SetName(const char* name) override;
    const char* GetName() const override;
    const std::string& GetNameString() const override;
    /// The value of an element is its first text child.
    void SetStringValue(const char* value) override;
    const char* GetStringValue() const override;
    const std::string& GetStringValueString() const override;
    unsigned int GetChildCount() const override;
    CXMLNode* GetChildAtIndex(unsigned int index) override;
    CXMLNode* Clone() const override;

    void InitWithName(const char* name);
    void InitWithNameWithURI(const char* name, const char* uri);
    void InitWithNameWithStringValue(const char* name, const char* value);

    /// Changes the first text child, or appends one; further text children stay as they are.
    void SetText(const char* text);
    /// The first text child's value; empty when there is none.
    const char* GetText() const;
    const std::string& GetTextString() const;
    /// Null when there is no text child.
    CXMLNode* GetFirstChildText() const;

    /// Replaces all children by one text.
    void SetInnerText(const char* text);
    /// All text below this element, in document order.
    void GetInnerText(std::string& outText);
    void AppendInnerText(std::string& ioText);

    /// Appends a node of any kind and takes it over; it must not belong to a tree already. When the
    /// append itself fails by an exception, the node is still the caller's.
    void AddChild(CXMLNode* inChild);
    const std::vector<CXMLNode*>& GetChildren() const { return m_children; }
    void RemoveAllChildren();

    /// Appends an attribute and takes it over, deleting an earlier one of the same name. When the
    /// append itself fails by an exception, the attribute is still the caller's.
    void AddAttribute(CXMLNode* inAtt);
    /// As `AddAttribute`, for a name that is known to be new: spares the search.
    void AddNewAttribute(std::unique_ptr<CXMLAttribute> attribute);
    const std::vector<CXMLNode*>& GetAttributes() const { return m_attributes; }
    /// Null when there is no such attribute.
    CXMLNode* GetAttributeForName(const char* inName);
    /// Deletes the first attribute of that name, if there is one.
    void RemoveAttributeForName(const char* name);
    void RemoveAllAttributes();

    /// The direct child elements of that name; they stay owned by this element.
    void GetElementsForName(const char* inName, std::vector<CXMLNode*>& outElements);
    /// Null when there is no such child element.
    CXMLElement* GetFirstElementForName(const char* inName);

private:
    std::string m_name;
    std::vector<CXMLNode*> m_attributes;
    std::vector<CXMLNode*> m_children;
    std::string m_uri;
};

}  // namespace varno_zpk
