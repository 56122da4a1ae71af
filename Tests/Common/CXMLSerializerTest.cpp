// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CXMLSerializer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Common/CExpatXMLParser.h"
#include "Common/CXMLAttribute.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLText.h"
#include "Tests/Common/XMLTreeText.h"

namespace {

using namespace varno_zpk;
using zpk_test::treeText;

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

std::string rewritten(const std::string& xml) {
    const std::unique_ptr<CXMLDocument> document = CExpatXMLParser::CreateCXMLNodeWithText(xml);
    return document != nullptr ? CXMLSerializer::Serialize(*document) : "malformed";
}

struct Row {
    const char* name;
    const char* xml;
    const char* written;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class CXMLSerializerTest : public ::testing::TestWithParam<Row> {};

TEST_P(CXMLSerializerTest, WritesTheText) {
    EXPECT_EQ(rewritten(GetParam().xml), kDeclaration + "\n" + GetParam().written);
}

TEST_P(CXMLSerializerTest, WhatIsWrittenReadsBackTheSame) {
    const auto first = CExpatXMLParser::CreateCXMLNodeWithText(GetParam().xml);
    const auto second = CExpatXMLParser::CreateCXMLNodeWithText(CXMLSerializer::Serialize(*first));
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(treeText(*second->GetRootElement()), treeText(*first->GetRootElement()));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CXMLSerializerTest,
    ::testing::Values(
        Row{"EmptyElementInTheShortForm", "<a></a>", "<a/>"},
        Row{"EmptyElementWithAttributes", "<a x='1' y='2'></a>", "<a x=\"1\" y=\"2\"/>"},
        Row{"ChildrenIndented", "<a><b><c/></b><d>t</d></a>",
            "<a>\n    <b>\n        <c/>\n    </b>\n    <d>t</d>\n</a>"},
        Row{"MixedContentInline", "<a><b>t<c><d/></c></b><e/></a>",
            "<a>\n    <b>t<c><d/></c></b>\n    <e/>\n</a>"},
        Row{"WhiteSpaceContent", "<a> </a>", "<a> </a>"},
        Row{"TextEscaped", "<a>&amp;&lt;&gt;\"'</a>", "<a>&amp;&lt;&gt;\"'</a>"},
        Row{"EndOfCdataEscaped", "<a>]]&gt;</a>", "<a>]]&gt;</a>"},
        Row{"AttributeEscaped", "<a x='&amp;&lt;>&quot;&apos;'/>", "<a x=\"&amp;&lt;>&quot;'\"/>"},
        Row{"CarriageReturnInTextAsAReference", "<a>1&#xD;2\n3</a>", "<a>1&#xD;2\n3</a>"},
        Row{"CarriageReturnInAnAttributeAsAReference", "<a x='1&#xD;2'/>", "<a x=\"1&#xD;2\"/>"},
        Row{"TabAndLineFeedInAnAttributeAsReferences", "<a x='1&#x9;2&#xA;3 4'/>",
            "<a x=\"1&#x9;2&#xA;3 4\"/>"},
        Row{"TextOfCarriageReturnsBesideAnElement", "<a>&#xD;<b/>&#xD;&#xD;</a>",
            "<a>&#xD;<b/>&#xD;&#xD;</a>"},
        Row{"BlankTextsBesideAnElement", "<a>&#x20; <b/>&#x9;\n<c/>&#xA;</a>",
            "<a>&#x20; <b/>&#x9;\n<c/>&#xA;</a>"},
        Row{"BlankTextWithoutAnElement", "<a>\n\t</a>", "<a>\n\t</a>"},
        Row{"PrefixKept", "<p:a p:x='1'/>", "<p:a p:x=\"1\"/>"},
        Row{"OtherCharactersAsTheyAre", "<a>\xE6\x97\xA5&#x1F600;</a>",
            "<a>\xE6\x97\xA5\xF0\x9F\x98\x80</a>"}),
    [](const auto& row) { return row.param.name; });

TEST(CXMLSerializerTest, CommentsAndInstructionsAreAbsentFromWhatIsWrittenBack) {
    EXPECT_EQ(rewritten("<!--1--><?p q?><a x='1'><!--2--><b/><?p q?></a>"),
              kDeclaration + "\n<a x=\"1\">\n    <b/>\n</a>");
}

TEST(CXMLSerializerTest, DocumentWithoutARootIsJustTheDeclaration) {
    CXMLDocument document;
    document.InitWithRootElement(nullptr);
    EXPECT_EQ(CXMLSerializer::Serialize(document), kDeclaration);
}

TEST(CXMLSerializerTest, NamespaceAddressIsNotWritten) {
    CXMLDocument document;
    document.InitWithRootElement(CXMLNode::CreateElementWithNameWithURI("p:a", "urn:x"));
    EXPECT_EQ(CXMLSerializer::Serialize(document), kDeclaration + "\n<p:a/>");
}

TEST(CXMLSerializerTest, ChildrenOfOtherKindsLeaveNoTrace) {
    CXMLDocument document;
    CXMLElement* root = CXMLNode::CreateElementWithName("a");
    document.InitWithRootElement(root);
    root->AddChild(CXMLNode::CreateAttributeWithNameWithStringValue("x", "1"));
    root->AddChild(CXMLNode::CreateDocumentWithRootElement(nullptr));
    EXPECT_EQ(CXMLSerializer::Serialize(document), kDeclaration + "\n<a/>");
}

TEST(CXMLSerializerTest, NeighbouringTextsAreWrittenOneAfterTheOther) {
    EXPECT_EQ(rewritten("<a>x<!--c-->y</a>"), kDeclaration + "\n<a>xy</a>");
}

TEST(CXMLSerializerTest, DeepestReadableTreeIsClonedAndWritten) {
    std::string xml;
    for (int level = 0; level < 1000; ++level) {
        xml += "<a>";
    }
    for (int level = 0; level < 1000; ++level) {
        xml += "</a>";
    }
    const std::unique_ptr<CXMLDocument> document = CExpatXMLParser::CreateCXMLNodeWithText(xml);
    ASSERT_NE(document, nullptr);
    const std::unique_ptr<CXMLNode> copy(document->Clone());
    const std::string written = CXMLSerializer::Serialize(static_cast<const CXMLDocument&>(*copy));
    EXPECT_NE(CExpatXMLParser::CreateCXMLNodeWithText(written), nullptr);
}

}  // namespace
