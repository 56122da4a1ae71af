// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>

#include "Common/XMLKIND.h"

namespace varno_zpk {

class CXMLAttribute;
class CXMLDocument;
class CXMLElement;
class CXMLText;

/// Base of the XML tree's nodes. Texts are UTF-8 byte strings. A node from a factory or from
/// `Clone` belongs to the caller until it is added to an element or given to a document; the tree
/// below a node goes with it. Null texts are programming errors everywhere. Main thread only.
class CXMLNode {
public:
    CXMLNode() = default;
    CXMLNode(const CXMLNode&) = delete;
    CXMLNode& operator=(const CXMLNode&) = delete;
    virtual ~CXMLNode();

    // Nodes without a name or a value ignore the setters, and their getters give an empty text.
    virtual void SetName(const char* name);
    virtual const char* GetName() const;
    virtual const std::string& GetNameString() const;
    virtual void SetStringValue(const char* value);
    virtual const char* GetStringValue() const;
    virtual const std::string& GetStringValueString() const;

    /// 0 for every node: the tree does not number its nodes.
    virtual unsigned int GetIndex() const;
    virtual unsigned int GetChildCount() const;
    /// Null when `index` is not below the child count. The child stays owned by this node.
    virtual CXMLNode* GetChildAtIndex(unsigned int index);
    /// A deep copy without a parent, owned by the caller.
    virtual CXMLNode* Clone() const = 0;

    XMLKIND GetKind() const { return m_kind; }
    void InitWithKind(XMLKIND kind) { m_kind = kind; }
    /// Notes the element that this node was added to.
    void SetParent(CXMLNode* parent) { m_parent = parent; }

    /// This node if it is a document; null for every node below, since a root element does not know
    /// its document.
    const CXMLDocument* GetRootDocument() const;

    /// Null when the file cannot be read or is not well-formed XML.
    static CXMLDocument* CreateDocumentWithPath(const char* path);
    /// Null when the text is not well-formed XML.
    static CXMLDocument* CreateDocumentWithXMLContents(const char* xml);
    /// The document takes the element over; null makes an empty document.
    static CXMLDocument* CreateDocumentWithRootElement(CXMLElement* root);
    static CXMLElement* CreateElementWithName(const char* name);
    static CXMLElement* CreateElementWithNameWithURI(const char* name, const char* uri);
    static CXMLElement* CreateElementWithNameWithStringValue(const char* name, const char* value);
    static CXMLAttribute* CreateAttributeWithNameWithStringValue(const char* name, const char* value);
    static CXMLText* CreateTextWithStringValue(const char* value);

protected:
    /// What getters give that have nothing to give.
    static const std::string s_NullString;

private:
    XMLKIND m_kind = XMLKIND_INVALID;
    CXMLNode* m_parent = nullptr;
    std::uint32_t m_index = 0;
};

}  // namespace varno_zpk
