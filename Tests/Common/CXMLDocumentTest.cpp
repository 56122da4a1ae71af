// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLDocument.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Common/CXMLElement.h"
#include "Common/CXMLText.h"
#include "Tests/Common/XMLTreeText.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using namespace varno_zpk;
using zpk_test::treeText;

class WatchedElement : public CXMLElement {
public:
    explicit WatchedElement(int& deaths) : m_deaths(deaths) { InitWithName("watched"); }
    ~WatchedElement() override { ++m_deaths; }

private:
    int& m_deaths;
};

TEST(CXMLDocumentTest, IsEmptyAtFirst) {
    const std::unique_ptr<CXMLDocument> document(CXMLNode::CreateDocumentWithRootElement(nullptr));
    EXPECT_EQ(document->GetKind(), XMLKIND_DOCUMENT);
    EXPECT_EQ(document->GetRootElement(), nullptr);
    EXPECT_EQ(document->GetChildCount(), 0u);
}

TEST(CXMLDocumentTest, OwnsItsRootWhichDoesNotKnowIt) {
    int deaths = 0;
    auto* root = new WatchedElement(deaths);
    {
        const std::unique_ptr<CXMLDocument> document(CXMLNode::CreateDocumentWithRootElement(root));
        EXPECT_EQ(document->GetRootElement(), root);
        EXPECT_EQ(root->GetRootDocument(), nullptr);
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(CXMLDocumentTest, SettingTheSameRootAgainDoesNothing) {
    int deaths = 0;
    auto* root = new WatchedElement(deaths);
    CXMLDocument document;
    document.InitWithRootElement(root);
    document.SetRootElement(root);
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(document.GetRootElement(), root);
}

TEST(CXMLDocumentTest, SettingAnotherRootDeletesTheOldOne) {
    int deaths = 0;
    CXMLDocument document;
    document.InitWithRootElement(new WatchedElement(deaths));
    CXMLElement* other = CXMLNode::CreateElementWithName("other");
    document.SetRootElement(other);
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(document.GetRootElement(), other);
    EXPECT_EQ(other->GetRootDocument(), nullptr);
    document.SetRootElement(nullptr);
    EXPECT_EQ(document.GetRootElement(), nullptr);
}

TEST(CXMLDocumentTest, NodeThatIsNoElementEmptiesTheDocumentAndStaysTheCallers) {
    int deaths = 0;
    CXMLDocument document;
    document.InitWithRootElement(new WatchedElement(deaths));
    const std::unique_ptr<CXMLText> text(CXMLNode::CreateTextWithStringValue("mine"));
    document.SetRootElement(text.get());
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(document.GetRootElement(), nullptr);
    EXPECT_STREQ(text->GetStringValue(), "mine");
}

TEST(CXMLDocumentTest, CloneHasARootOfItsOwn) {
    const std::unique_ptr<CXMLDocument> document(
        CXMLNode::CreateDocumentWithXMLContents("<a x='1'><b/></a>"));
    const std::unique_ptr<CXMLNode> copy(document->Clone());
    const auto& copiedDocument = static_cast<const CXMLDocument&>(*copy);
    document->SetRootElement(nullptr);
    EXPECT_EQ(copy->GetKind(), XMLKIND_DOCUMENT);
    EXPECT_EQ(treeText(*copiedDocument.GetRootElement()), "a(x='1')[b[]]");
}

TEST(CXMLDocumentTest, CloneOfAnEmptyDocumentIsEmpty) {
    CXMLDocument document;
    const std::unique_ptr<CXMLNode> copy(document.Clone());
    EXPECT_EQ(copy->GetKind(), XMLKIND_DOCUMENT);
    EXPECT_EQ(static_cast<const CXMLDocument&>(*copy).GetRootElement(), nullptr);
}

TEST(CXMLDocumentTest, WritesToTextAndFile) {
    const zpk_test::TemporaryFolder folder;
    const std::unique_ptr<CXMLDocument> document(CXMLNode::CreateDocumentWithXMLContents("<a>t</a>"));
    const std::string expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>t</a>";
    std::string text = "old";
    document->WriteXMLContents(text);
    EXPECT_EQ(text, expected);
    document->WriteToFile((folder / "out.xml").c_str());
    EXPECT_EQ(zpk_test::readFile(folder / "out.xml"), expected);
    const std::unique_ptr<CXMLDocument> again(CXMLNode::CreateDocumentWithPath((folder / "out.xml").c_str()));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(treeText(*again->GetRootElement()), "a['t']");
}

}  // namespace
