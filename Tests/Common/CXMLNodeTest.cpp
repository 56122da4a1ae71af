// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLNode.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "Common/CXMLAttribute.h"
#include "Common/CXMLDocument.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLText.h"
#include "Tests/Support/VirtualSlot.h"

namespace {

using namespace varno_zpk;
using zpk_test::virtualSlot;

/// A node that overrides nothing that it need not.
class PlainNode : public CXMLNode {
public:
    CXMLNode* Clone() const override { return new PlainNode; }
    static const std::string* nullString() { return &s_NullString; }
};

TEST(XMLKINDTest, HasTheFixedNumbersIn32Bits) {
    EXPECT_EQ(sizeof(XMLKIND), 4u);
    EXPECT_EQ(XMLKIND_INVALID, 0u);
    EXPECT_EQ(XMLKIND_DOCUMENT, 1u);
    EXPECT_EQ(XMLKIND_ELEMENT, 2u);
    EXPECT_EQ(XMLKIND_ATTRIBUTE, 3u);
    EXPECT_EQ(XMLKIND_TEXT, 7u);
}

TEST(CXMLNodeTest, VirtualOperationsAreInSlotOrder) {
    EXPECT_EQ(virtualSlot(&CXMLNode::SetName), 3u);
    EXPECT_EQ(virtualSlot(&CXMLNode::GetName), 4u);
    EXPECT_EQ(virtualSlot(&CXMLNode::GetNameString), 5u);
    EXPECT_EQ(virtualSlot(&CXMLNode::SetStringValue), 6u);
    EXPECT_EQ(virtualSlot(&CXMLNode::GetStringValue), 7u);
    EXPECT_EQ(virtualSlot(&CXMLNode::GetStringValueString), 8u);
    EXPECT_EQ(virtualSlot(&CXMLNode::GetIndex), 9u);
    EXPECT_EQ(virtualSlot(&CXMLNode::GetChildCount), 10u);
    EXPECT_EQ(virtualSlot(&CXMLNode::GetChildAtIndex), 11u);
    EXPECT_EQ(virtualSlot(&CXMLNode::Clone), 12u);
    EXPECT_TRUE(std::has_virtual_destructor_v<CXMLNode>);
}

TEST(CXMLNodeTest, SubclassesAddNoSlotsBeforeTheInheritedOnes) {
    EXPECT_EQ(virtualSlot(&CXMLElement::SetName), 3u);
    EXPECT_EQ(virtualSlot(&CXMLElement::GetChildAtIndex), 11u);
    EXPECT_EQ(virtualSlot(&CXMLElement::Clone), 12u);
    EXPECT_EQ(virtualSlot(&CXMLAttribute::Clone), 12u);
    EXPECT_EQ(virtualSlot(&CXMLText::Clone), 12u);
    EXPECT_EQ(virtualSlot(&CXMLDocument::Clone), 12u);
}

TEST(CXMLNodeTest, BaseIgnoresSettersAndGivesTheEmptyString) {
    PlainNode node;
    node.SetName("name");
    node.SetStringValue("value");
    EXPECT_EQ(&node.GetNameString(), PlainNode::nullString());
    EXPECT_EQ(&node.GetStringValueString(), PlainNode::nullString());
    EXPECT_EQ(node.GetName(), PlainNode::nullString()->c_str());
    EXPECT_EQ(node.GetStringValue(), PlainNode::nullString()->c_str());
    EXPECT_TRUE(PlainNode::nullString()->empty());
}

TEST(CXMLNodeTest, BaseHasNoChildren) {
    PlainNode node;
    EXPECT_EQ(node.GetChildCount(), 0u);
    EXPECT_EQ(node.GetChildAtIndex(0), nullptr);
}

TEST(CXMLNodeTest, KindIsInvalidUntilSet) {
    EXPECT_EQ(PlainNode().GetKind(), XMLKIND_INVALID);
    EXPECT_EQ(CXMLElement().GetKind(), XMLKIND_INVALID);
    EXPECT_EQ(CXMLAttribute().GetKind(), XMLKIND_INVALID);
    EXPECT_EQ(CXMLText().GetKind(), XMLKIND_INVALID);
    EXPECT_EQ(CXMLDocument().GetKind(), XMLKIND_INVALID);
    PlainNode node;
    node.InitWithKind(XMLKIND_TEXT);
    EXPECT_EQ(node.GetKind(), XMLKIND_TEXT);
}

TEST(CXMLNodeTest, IndexIsZeroForEveryNode) {
    CXMLElement parent;
    for (const char* name : {"a", "b", "c"}) {
        parent.AddChild(CXMLNode::CreateElementWithName(name));
        parent.AddAttribute(CXMLNode::CreateAttributeWithNameWithStringValue(name, ""));
    }
    EXPECT_EQ(parent.GetIndex(), 0u);
    EXPECT_EQ(parent.GetChildAtIndex(2)->GetIndex(), 0u);
    EXPECT_EQ(parent.GetAttributes()[2]->GetIndex(), 0u);
    EXPECT_EQ(CXMLDocument().GetIndex(), 0u);
    EXPECT_EQ(CXMLText().GetIndex(), 0u);
}

TEST(CXMLNodeTest, RootDocumentIsFoundOnlyFromTheDocumentItself) {
    const std::unique_ptr<CXMLDocument> document(CXMLNode::CreateDocumentWithXMLContents("<a><b/></a>"));
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->GetRootDocument(), document.get());
    EXPECT_EQ(document->GetRootElement()->GetRootDocument(), nullptr);
    EXPECT_EQ(document->GetRootElement()->GetChildAtIndex(0)->GetRootDocument(), nullptr);
}

TEST(CXMLNodeTest, RootDocumentFollowsTheParents) {
    CXMLDocument document;
    document.InitWithRootElement(nullptr);
    CXMLElement element;
    CXMLNode* child = CXMLNode::CreateElementWithName("child");
    element.AddChild(child);
    element.SetParent(&document);
    EXPECT_EQ(child->GetRootDocument(), &document);
}

TEST(CXMLNodeTest, FactoriesSetKindNameAndValue) {
    const std::unique_ptr<CXMLElement> element(CXMLNode::CreateElementWithName("e"));
    EXPECT_EQ(element->GetKind(), XMLKIND_ELEMENT);
    EXPECT_EQ(element->GetNameString(), "e");
    EXPECT_EQ(element->GetChildCount(), 0u);
    const std::unique_ptr<CXMLElement> withURI(CXMLNode::CreateElementWithNameWithURI("u", "urn:x"));
    EXPECT_EQ(withURI->GetKind(), XMLKIND_ELEMENT);
    EXPECT_STREQ(withURI->GetName(), "u");
    const std::unique_ptr<CXMLElement> withValue(CXMLNode::CreateElementWithNameWithStringValue("v", "text"));
    EXPECT_EQ(withValue->GetKind(), XMLKIND_ELEMENT);
    EXPECT_EQ(withValue->GetChildCount(), 1u);
    EXPECT_STREQ(withValue->GetText(), "text");
    const std::unique_ptr<CXMLAttribute> attribute(
        CXMLNode::CreateAttributeWithNameWithStringValue("n", "w"));
    EXPECT_EQ(attribute->GetKind(), XMLKIND_ATTRIBUTE);
    EXPECT_EQ(attribute->GetNameString(), "n");
    EXPECT_STREQ(attribute->GetName(), "n");
    EXPECT_EQ(attribute->GetStringValueString(), "w");
    EXPECT_STREQ(attribute->GetStringValue(), "w");
    const std::unique_ptr<CXMLText> text(CXMLNode::CreateTextWithStringValue("t"));
    EXPECT_EQ(text->GetKind(), XMLKIND_TEXT);
    EXPECT_STREQ(text->GetStringValue(), "t");
}

TEST(CXMLNodeTest, DocumentFactoriesGiveNullForWhatIsNoXML) {
    EXPECT_EQ(CXMLNode::CreateDocumentWithXMLContents("no xml"), nullptr);
    EXPECT_EQ(CXMLNode::CreateDocumentWithPath("/nonexistent/file.xml"), nullptr);
}

TEST(CXMLAttributeTest, StartsWithEmptyTextsAndClonesBoth) {
    CXMLAttribute attribute;
    EXPECT_STREQ(attribute.GetName(), "");
    EXPECT_STREQ(attribute.GetStringValue(), "");
    attribute.SetName("n");
    attribute.SetStringValue("v");
    const std::unique_ptr<CXMLNode> copy(attribute.Clone());
    EXPECT_NE(dynamic_cast<CXMLAttribute*>(copy.get()), nullptr);
    EXPECT_EQ(copy->GetKind(), XMLKIND_ATTRIBUTE);
    EXPECT_EQ(copy->GetNameString(), "n");
    EXPECT_EQ(copy->GetStringValueString(), "v");
}

TEST(CXMLTextTest, HasAValueAndNoName) {
    CXMLText text;
    text.SetName("ignored");
    text.SetStringValue("v");
    EXPECT_STREQ(text.GetName(), "");
    EXPECT_EQ(&text.GetNameString(), PlainNode::nullString());
    EXPECT_EQ(text.GetStringValueString(), "v");
    const std::unique_ptr<CXMLNode> copy(text.Clone());
    EXPECT_NE(dynamic_cast<CXMLText*>(copy.get()), nullptr);
    EXPECT_EQ(copy->GetKind(), XMLKIND_TEXT);
    EXPECT_STREQ(copy->GetStringValue(), "v");
}

}  // namespace
