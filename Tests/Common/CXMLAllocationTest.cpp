// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Every allocation of the tree's operations fails once; the leak check tells what was lost.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Common/CExpatXMLParser.h"
#include "Common/CXMLAttribute.h"
#include "Common/CXMLDocument.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLText.h"
#include "Tests/Common/XMLTreeText.h"
#include "Tests/Support/FailingAllocation.h"

namespace {

using namespace varno_zpk;
using zpk_test::runWithEachAllocationFailing;
using zpk_test::treeText;

const char* const kLongText = "a text that is too long to be kept inside the string object";

const std::string kXml = "<document-element-of-a-name-that-needs-memory attribute-of-such-a-name='" +
                         std::string(kLongText) + "' b='2'>" + kLongText + "<child x='1'><leaf>" + kLongText +
                         "</leaf><leaf/></child>t<!-- c -->u</document-element-of-a-name-that-needs-memory>";

TEST(CXMLAllocationTest, ParsingLeaksNothing) {
    std::string tree;
    const std::size_t failures = runWithEachAllocationFailing([&] {
        const auto document = CExpatXMLParser::CreateCXMLNodeWithText(kXml);
        ASSERT_NE(document, nullptr);
        tree = treeText(*document->GetRootElement());
    });
    EXPECT_GT(failures, 15u);
    EXPECT_EQ(tree, treeText(*CExpatXMLParser::CreateCXMLNodeWithText(kXml)->GetRootElement()));
}

TEST(CXMLAllocationTest, CloningLeaksNothingAndLeavesTheOriginal) {
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText(kXml);
    const std::string before = treeText(*document->GetRootElement());
    const std::size_t failures =
        runWithEachAllocationFailing([&] { const std::unique_ptr<CXMLNode> copy(document->Clone()); });
    EXPECT_GT(failures, 15u);
    EXPECT_EQ(treeText(*document->GetRootElement()), before);
}

TEST(CXMLAllocationTest, FactoriesLeakNothing) {
    const std::size_t failures = runWithEachAllocationFailing([&] {
        delete CXMLNode::CreateElementWithName(kLongText);
        delete CXMLNode::CreateElementWithNameWithURI(kLongText, kLongText);
        delete CXMLNode::CreateElementWithNameWithStringValue(kLongText, kLongText);
        delete CXMLNode::CreateAttributeWithNameWithStringValue(kLongText, kLongText);
        delete CXMLNode::CreateTextWithStringValue(kLongText);
        delete CXMLNode::CreateDocumentWithRootElement(nullptr);
    });
    EXPECT_GE(failures, 14u);
}

TEST(CXMLAllocationTest, FailedChangesLeaveTheElementWhole) {
    CXMLElement element;
    element.InitWithName("e");
    element.AddChild(CXMLNode::CreateElementWithName("child"));
    const std::size_t setText = runWithEachAllocationFailing([&] {
        EXPECT_EQ(treeText(element), "e[child[]]");
        element.SetText(kLongText);
    });
    EXPECT_GE(setText, 2u);
    element.RemoveAllChildren();
}

TEST(CXMLAllocationTest, WritingAssignsTheOutputOnlyWhenDone) {
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText(kXml);
    std::string out = "old";
    std::string before = out;
    const std::size_t failures = runWithEachAllocationFailing([&] {
        try {
            CExpatXMLParser().WriteXMLDocumentToString(document.get(), out);
        } catch (const std::bad_alloc&) {
            before = out;
            throw;
        }
    });
    EXPECT_GE(failures, 2u);
    EXPECT_EQ(before, "old");
    EXPECT_NE(out, "old");
}

}  // namespace
