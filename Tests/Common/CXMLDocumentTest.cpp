// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLDocument.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Common/CXMLElement.h"
#include "Common/CXMLParser.h"
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

/// A default parser that writes down what it is asked, and does nothing.
class NotingParser : public CXMLParser {
public:
    /// Takes the place of the default parser; the next `Finalize` deletes it.
    static void install(std::vector<std::string>& asked) {
        Finalize();
        s_DefaultParser = new NotingParser(asked);
    }

    CXMLDocument* CreateXMLDocumentWithPath(const char* path) override { return note("path", path); }
    CXMLDocument* CreateXMLDocumentWithXMLContents(const char* xml) override { return note("text", xml); }
    void WriteXMLDocumentToFile(CXMLDocument* doc, const char* path) override {
        note(doc->GetRootElement()->GetName(), path);
    }
    void WriteXMLDocumentToString(CXMLDocument* doc, std::string& outXML) override {
        note(doc->GetRootElement()->GetName(), outXML.c_str());
        outXML = "noted";
    }

private:
    explicit NotingParser(std::vector<std::string>& asked) : m_asked(asked) {}

    CXMLDocument* note(const char* what, const char* argument) {
        m_asked.push_back(std::string(what) + " " + argument);
        return nullptr;
    }

    std::vector<std::string>& m_asked;
};

TEST(CXMLDocumentTest, FactoriesAndWritersAskTheDefaultParser) {
    std::vector<std::string> asked;
    NotingParser::install(asked);
    EXPECT_EQ(CXMLNode::CreateDocumentWithPath("/in.xml"), nullptr);
    EXPECT_EQ(CXMLNode::CreateDocumentWithXMLContents("<a/>"), nullptr);
    CXMLDocument document;
    document.InitWithRootElement(CXMLNode::CreateElementWithName("root"));
    document.WriteToFile("/missing/out.xml");
    std::string text = "old";
    document.WriteXMLContents(text);
    CXMLParser::Finalize();
    EXPECT_EQ(asked,
              (std::vector<std::string>{"path /in.xml", "text <a/>", "root /missing/out.xml", "root old"}));
    EXPECT_EQ(text, "noted");
}

TEST(CXMLDocumentTest, RootIsNoChild) {
    CXMLDocument document;
    document.InitWithRootElement(CXMLNode::CreateElementWithName("root"));
    EXPECT_EQ(document.GetChildCount(), 0u);
    EXPECT_EQ(document.GetChildAtIndex(0), nullptr);
}

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
