// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLElement.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Common/CXMLAttribute.h"
#include "Common/CXMLDocument.h"
#include "Common/CXMLText.h"
#include "Tests/Common/AssertionReport.h"
#include "Tests/Common/XMLTreeText.h"

namespace {

using namespace varno_zpk;
using namespace std::string_literals;
using zpk_test::regexFor;
using zpk_test::treeText;

/// Counts the living and notes the order of their ends.
class WatchedNode : public CXMLNode {
public:
    WatchedNode(std::string label, std::vector<std::string>& deaths)
        : m_label(std::move(label)), m_deaths(deaths) {}
    ~WatchedNode() override { m_deaths.push_back(m_label); }
    CXMLNode* Clone() const override { return new WatchedNode(m_label, m_deaths); }

private:
    std::string m_label;
    std::vector<std::string>& m_deaths;
};

class WatchedAttribute : public CXMLAttribute {
public:
    WatchedAttribute(const char* name, std::string label, std::vector<std::string>& deaths)
        : m_label(std::move(label)), m_deaths(deaths) {
        InitWithKind(XMLKIND_ATTRIBUTE);
        SetName(name);
    }
    ~WatchedAttribute() override { m_deaths.push_back(m_label); }

private:
    std::string m_label;
    std::vector<std::string>& m_deaths;
};

using Labels = std::vector<std::string>;

CXMLText* text(const char* value) {
    return CXMLNode::CreateTextWithStringValue(value);
}

CXMLAttribute* newAttribute(const char* name, const char* value) {
    return CXMLNode::CreateAttributeWithNameWithStringValue(name, value);
}

class CXMLElementTest : public ::testing::Test {
protected:
    CXMLElementTest() { element.InitWithName("e"); }
    CXMLElement element;
};

TEST_F(CXMLElementTest, TextOfAnElementWithoutTextIsEmptyAndNeverNull) {
    element.AddChild(CXMLNode::CreateElementWithNameWithStringValue("child", "inner"));
    ASSERT_NE(element.GetText(), nullptr);
    EXPECT_STREQ(element.GetText(), "");
    EXPECT_EQ(&element.GetTextString(), &CXMLText().GetNameString());
    EXPECT_STREQ(element.GetStringValue(), "");
    EXPECT_EQ(element.GetFirstChildText(), nullptr);
}

TEST_F(CXMLElementTest, SetTextChangesOnlyTheFirstTextChild) {
    element.AddChild(text("x"));
    element.AddChild(CXMLNode::CreateElementWithName("child"));
    element.AddChild(text("y"));
    element.SetText("a");
    EXPECT_EQ(treeText(element), "e['a' child[] 'y']");
}

TEST_F(CXMLElementTest, SetTextAppendsATextWhenThereIsNone) {
    element.AddChild(CXMLNode::CreateElementWithName("child"));
    element.SetText("a");
    EXPECT_EQ(treeText(element), "e[child[] 'a']");
    EXPECT_EQ(element.GetFirstChildText(), element.GetChildAtIndex(1));
}

TEST_F(CXMLElementTest, EmptyTextIsATextToo) {
    element.SetText("");
    EXPECT_EQ(treeText(element), "e['']");
    element.SetText("a");
    element.SetText("");
    EXPECT_EQ(treeText(element), "e['']");
}

TEST_F(CXMLElementTest, StringValueIsTheText) {
    element.SetStringValue("first");
    element.AddChild(text("second"));
    EXPECT_STREQ(element.GetText(), "first");
    EXPECT_STREQ(element.GetStringValue(), "first");
    EXPECT_EQ(element.GetStringValueString(), "first");
    EXPECT_EQ(&element.GetStringValueString(), &element.GetFirstChildText()->GetStringValueString());
}

TEST_F(CXMLElementTest, SecondAttributeOfANameReplacesTheFirstAndComesLast) {
    Labels deaths;
    element.AddAttribute(new WatchedAttribute("id", "first", deaths));
    element.AddAttribute(newAttribute("x", "1"));
    element.AddAttribute(newAttribute("id", "2"));
    EXPECT_EQ(deaths, Labels{"first"});
    EXPECT_EQ(treeText(element), "e(x='1' id='2')[]");
}

TEST_F(CXMLElementTest, AttributeNamesAreComparedByteByByte) {
    element.AddAttribute(newAttribute("id", "1"));
    element.AddAttribute(newAttribute("ID", "2"));
    element.AddAttribute(newAttribute("id ", "3"));
    EXPECT_EQ(element.GetAttributes().size(), 3u);
    EXPECT_STREQ(element.GetAttributeForName("ID")->GetStringValue(), "2");
    EXPECT_EQ(element.GetAttributeForName("Id"), nullptr);
    EXPECT_EQ(element.GetAttributeForName(""), nullptr);
}

TEST_F(CXMLElementTest, LookUpAndRemovalTakeTheFirstOfEqualNames) {
    element.AddAttribute(newAttribute("a", "1"));
    element.AddAttribute(newAttribute("b", "2"));
    element.AddAttribute(newAttribute("c", "3"));
    element.GetAttributes()[2]->SetName("a");
    EXPECT_STREQ(element.GetAttributeForName("a")->GetStringValue(), "1");
    element.RemoveAttributeForName("a");
    EXPECT_EQ(treeText(element), "e(b='2' a='3')[]");
}

TEST_F(CXMLElementTest, RemovingAnAttributeKeepsTheOrderOfTheRest) {
    Labels deaths;
    for (const char* name : {"a", "b", "c"}) {
        element.AddAttribute(new WatchedAttribute(name, name, deaths));
    }
    element.RemoveAttributeForName("b");
    EXPECT_EQ(deaths, Labels{"b"});
    EXPECT_EQ(treeText(element), "e(a='' c='')[]");
    element.RemoveAttributeForName("b");
    EXPECT_EQ(element.GetAttributes().size(), 2u);
    // They must not outlive their list of deaths.
    element.RemoveAllAttributes();
}

TEST_F(CXMLElementTest, AttributesAreNoChildren) {
    element.AddAttribute(newAttribute("a", "1"));
    EXPECT_EQ(element.GetChildCount(), 0u);
    EXPECT_EQ(element.GetChildAtIndex(0), nullptr);
}

TEST_F(CXMLElementTest, NewAttributeIsAppended) {
    element.AddAttribute(newAttribute("a", "1"));
    element.AddNewAttribute(std::unique_ptr<CXMLAttribute>(newAttribute("b", "2")));
    EXPECT_EQ(treeText(element), "e(a='1' b='2')[]");
}

TEST_F(CXMLElementTest, AddedNodesKnowTheirElement) {
    CXMLDocument document;
    document.InitWithRootElement(nullptr);
    CXMLElement* child = CXMLNode::CreateElementWithName("child");
    CXMLAttribute* attribute = newAttribute("a", "1");
    element.AddChild(child);
    element.AddAttribute(attribute);
    EXPECT_EQ(child->GetRootDocument(), nullptr);
    element.SetParent(&document);
    EXPECT_EQ(child->GetRootDocument(), &document);
    EXPECT_EQ(attribute->GetRootDocument(), &document);
}

/// The element's nodes know it when they find the document above it.
void expectNodesKnowTheirElement(CXMLElement& element) {
    CXMLDocument document;
    document.InitWithRootElement(nullptr);
    element.SetParent(&document);
    for (const std::vector<CXMLNode*>& nodes : {element.GetChildren(), element.GetAttributes()}) {
        for (const CXMLNode* node : nodes) {
            EXPECT_EQ(node->GetRootDocument(), &document) << node->GetStringValue();
        }
    }
    element.SetParent(nullptr);
}

TEST_F(CXMLElementTest, NodesThatTheElementMakesKnowIt) {
    element.SetText("made");
    expectNodesKnowTheirElement(element);
    element.SetInnerText("made again");
    expectNodesKnowTheirElement(element);
    element.AddNewAttribute(std::unique_ptr<CXMLAttribute>(newAttribute("a", "1")));
    element.AddAttribute(newAttribute("a", "in its place"));
    element.AddNewAttribute(std::unique_ptr<CXMLAttribute>(newAttribute("b", "2")));
    expectNodesKnowTheirElement(element);
}

TEST_F(CXMLElementTest, NodesOfACloneKnowTheClone) {
    element.AddChild(text("t"));
    element.AddChild(CXMLNode::CreateElementWithNameWithStringValue("child", "u"));
    element.AddAttribute(newAttribute("a", "1"));
    const std::unique_ptr<CXMLNode> copy(element.Clone());
    auto& copiedElement = static_cast<CXMLElement&>(*copy);
    ASSERT_EQ(treeText(copiedElement), "e(a='1')['t' child['u']]");
    expectNodesKnowTheirElement(copiedElement);
    expectNodesKnowTheirElement(*copiedElement.GetFirstElementForName("child"));
}

TEST_F(CXMLElementTest, ChildIndexAtTheCountIsNull) {
    element.AddChild(text("a"));
    element.AddChild(text("b"));
    EXPECT_STREQ(element.GetChildAtIndex(1)->GetStringValue(), "b");
    EXPECT_EQ(element.GetChildAtIndex(element.GetChildCount()), nullptr);
    EXPECT_EQ(element.GetChildAtIndex(0xFFFFFFFFu), nullptr);
}

TEST_F(CXMLElementTest, AnyKindIsAcceptedAsAChild) {
    element.AddChild(newAttribute("a", "1"));
    EXPECT_EQ(element.GetChildCount(), 1u);
    std::string text;
    element.GetInnerText(text);
    EXPECT_EQ(text, "");
}

TEST_F(CXMLElementTest, ElementsForNameAreTheDirectOnesInOrder) {
    element.AddChild(CXMLNode::CreateElementWithNameWithStringValue("item", "1"));
    element.AddChild(text("item"));
    CXMLElement* other = CXMLNode::CreateElementWithName("other");
    other->AddChild(CXMLNode::CreateElementWithName("item"));
    element.AddChild(other);
    element.AddChild(CXMLNode::CreateElementWithName("Item"));
    element.AddChild(CXMLNode::CreateElementWithNameWithStringValue("item", "2"));
    std::vector<CXMLNode*> found;
    element.GetElementsForName("item", found);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_STREQ(found[0]->GetStringValue(), "1");
    EXPECT_STREQ(found[1]->GetStringValue(), "2");
    EXPECT_EQ(element.GetFirstElementForName("item"), found[0]);
    EXPECT_EQ(element.GetFirstElementForName("nothing"), nullptr);
}

TEST_F(CXMLElementTest, ElementsForNameClearsTheOutputEvenWithoutAMatch) {
    std::vector<CXMLNode*> found{&element};
    element.GetElementsForName("nothing", found);
    EXPECT_TRUE(found.empty());
}

TEST_F(CXMLElementTest, ChildAttributeOfTheNameIsNoElement) {
    element.AddChild(newAttribute("item", "1"));
    std::vector<CXMLNode*> found;
    element.GetElementsForName("item", found);
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(element.GetFirstElementForName("item"), nullptr);
}

TEST_F(CXMLElementTest, InnerTextIsCollectedDepthFirst) {
    element.AddChild(text("a"));
    element.AddChild(CXMLNode::CreateElementWithNameWithStringValue("child", "b"));
    element.AddChild(text("c"));
    element.AddAttribute(newAttribute("x", "attribute"));
    std::string text = "old";
    element.GetInnerText(text);
    EXPECT_EQ(text, "abc");
    element.AppendInnerText(text);
    EXPECT_EQ(text, "abcabc");
}

TEST_F(CXMLElementTest, InnerTextOfTwoLevelsAndOfSeveralTexts) {
    CXMLElement* leaf = CXMLNode::CreateElementWithNameWithStringValue("leaf", "c");
    leaf->AddChild(text("d"));
    CXMLElement* child = CXMLNode::CreateElementWithNameWithStringValue("child", "b");
    child->AddChild(leaf);
    child->AddChild(text("e"));
    element.AddChild(text("a"));
    element.AddChild(child);
    element.AddChild(text("f"));
    std::string inner;
    element.GetInnerText(inner);
    EXPECT_EQ(inner, "abcdef");
}

TEST_F(CXMLElementTest, SetInnerTextReplacesChildrenAndKeepsAttributes) {
    element.AddChild(text("a"));
    element.AddChild(CXMLNode::CreateElementWithNameWithStringValue("child", "b"));
    element.AddAttribute(newAttribute("x", "1"));
    element.SetInnerText("new");
    EXPECT_EQ(treeText(element), "e(x='1')['new']");
    element.SetInnerText(element.GetText());
    EXPECT_EQ(treeText(element), "e(x='1')['new']");
}

TEST(CXMLElementLifeTest, DestructionTakesChildrenThenAttributesFrontToBack) {
    Labels deaths;
    {
        CXMLElement element;
        element.AddAttribute(new WatchedAttribute("a", "attribute 1", deaths));
        element.AddChild(new WatchedNode("child 1", deaths));
        element.AddAttribute(new WatchedAttribute("b", "attribute 2", deaths));
        element.AddChild(new WatchedNode("child 2", deaths));
    }
    EXPECT_EQ(deaths, (Labels{"child 1", "child 2", "attribute 1", "attribute 2"}));
}

TEST(CXMLElementLifeTest, RemoveAllDeletesAndEmpties) {
    Labels deaths;
    CXMLElement element;
    element.AddAttribute(new WatchedAttribute("a", "attribute", deaths));
    element.AddChild(new WatchedNode("child", deaths));
    element.RemoveAllChildren();
    EXPECT_EQ(deaths, Labels{"child"});
    EXPECT_EQ(element.GetChildCount(), 0u);
    element.RemoveAllAttributes();
    EXPECT_EQ(deaths, (Labels{"child", "attribute"}));
    EXPECT_TRUE(element.GetAttributes().empty());
    element.RemoveAllChildren();
    element.RemoveAllAttributes();
    EXPECT_EQ(deaths.size(), 2u);
}

TEST_F(CXMLElementTest, CloneIsDeepAndApart) {
    CXMLElement* child = CXMLNode::CreateElementWithNameWithStringValue("child", "t");
    child->AddAttribute(newAttribute("x", "1"));
    element.AddChild(child);
    element.AddChild(text("u"));
    element.AddAttribute(newAttribute("a", "2"));
    element.AddAttribute(newAttribute("b", "3"));
    const std::unique_ptr<CXMLNode> copy(element.Clone());
    const auto& copiedElement = static_cast<const CXMLElement&>(*copy);
    element.RemoveAllChildren();
    EXPECT_EQ(copy->GetKind(), XMLKIND_ELEMENT);
    EXPECT_EQ(treeText(copiedElement), "e(a='2' b='3')[child(x='1')['t'] 'u']");
    EXPECT_EQ(copy->GetRootDocument(), nullptr);
}

TEST_F(CXMLElementTest, CloneKeepsTheLastOfTwoAttributesOfOneName) {
    element.AddAttribute(newAttribute("a", "1"));
    element.AddAttribute(newAttribute("b", "2"));
    element.AddAttribute(newAttribute("c", "3"));
    element.GetAttributes()[2]->SetName("a");
    const std::unique_ptr<CXMLNode> copy(element.Clone());
    EXPECT_EQ(treeText(static_cast<const CXMLElement&>(*copy)), "e(b='2' a='3')[]");
    EXPECT_EQ(treeText(element), "e(a='1' b='2' a='3')[]");
}

struct Misuse {
    const char* name;
    const char* function;
    const char* expression;
    std::function<void(CXMLElement&)> action;
};

void PrintTo(const Misuse& misuse, std::ostream* out) {
    *out << misuse.name;
}

std::vector<Misuse> misuses() {
    static std::vector<CXMLNode*> found;
    return {
        {"SetText", "void varno_zpk::CXMLElement::SetText(const char*)", "text",
         [](CXMLElement& e) { e.SetText(nullptr); }},
        {"SetStringValue", "void varno_zpk::CXMLElement::SetText(const char*)", "text",
         [](CXMLElement& e) { e.SetStringValue(nullptr); }},
        {"SetInnerText", "void varno_zpk::CXMLElement::SetInnerText(const char*)", "text",
         [](CXMLElement& e) { e.SetInnerText(nullptr); }},
        {"AddChild", "void varno_zpk::CXMLElement::AddChild(varno_zpk::CXMLNode*)", "inChild",
         [](CXMLElement& e) { e.AddChild(nullptr); }},
        {"AddAttributeNull", "void varno_zpk::CXMLElement::AddAttribute(varno_zpk::CXMLNode*)",
         "dynamic_cast<CXMLAttribute*>(inAtt)", [](CXMLElement& e) { e.AddAttribute(nullptr); }},
        {"AddAttributeOfAnotherClass", "void varno_zpk::CXMLElement::AddAttribute(varno_zpk::CXMLNode*)",
         "dynamic_cast<CXMLAttribute*>(inAtt)", [](CXMLElement& e) { e.AddAttribute(text("t")); }},
        {"AddAttributeWithoutKind", "void varno_zpk::CXMLElement::AddAttribute(varno_zpk::CXMLNode*)",
         "inAtt->GetKind()==XMLKIND_ATTRIBUTE", [](CXMLElement& e) { e.AddAttribute(new CXMLAttribute); }},
        {"RemoveAttributeForName", "void varno_zpk::CXMLElement::RemoveAttributeForName(const char*)", "name",
         [](CXMLElement& e) { e.RemoveAttributeForName(nullptr); }},
        {"GetAttributeForName",
         "varno_zpk::CXMLNode* varno_zpk::CXMLElement::GetAttributeForName(const char*)", "inName",
         [](CXMLElement& e) { e.GetAttributeForName(nullptr); }},
        {"GetElementsForName",
         "void varno_zpk::CXMLElement::GetElementsForName(const char*, "
         "std::vector<varno_zpk::CXMLNode*>&)",
         "inName", [](CXMLElement& e) { e.GetElementsForName(nullptr, found); }},
        {"GetFirstElementForName",
         "varno_zpk::CXMLElement* varno_zpk::CXMLElement::GetFirstElementForName(const char*)", "inName",
         [](CXMLElement& e) { e.GetFirstElementForName(nullptr); }},
    };
}

class CXMLElementDeathTest : public ::testing::TestWithParam<Misuse> {};

TEST_P(CXMLElementDeathTest, MisuseStopsTheProgramWithTheReport) {
    const Misuse& misuse = GetParam();
    const std::string report =
        regexFor(": Common/CXMLElement.cpp:") + "[0-9]+" +
        regexFor(": "s + misuse.function + ": Assertion `" + misuse.expression + "' failed.\n");
    CXMLElement element;
    EXPECT_EXIT(misuse.action(element), ::testing::KilledBySignal(SIGABRT), report);
}

INSTANTIATE_TEST_SUITE_P(Misuse, CXMLElementDeathTest, ::testing::ValuesIn(misuses()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
