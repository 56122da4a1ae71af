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
#include "Tests/Support/FailingAllocation.h"
#include "Tests/Common/XMLTreeText.h"

namespace {

using namespace varno_zpk;
using zpk_test::RunWithEachAllocationFailing;
using zpk_test::TreeText;

const char* const LONG_TEXT = "a text that is too long to be kept inside the string object";

const std::string XML = "<document-element-of-a-name-that-needs-memory attribute-of-such-a-name='" +
                        std::string(LONG_TEXT) + "' b='2'>" + LONG_TEXT + "<child x='1'><leaf>" + LONG_TEXT +
                        "</leaf><leaf/></child>t<!-- c -->u</document-element-of-a-name-that-needs-memory>";

TEST(CXMLAllocationTest, ParsingLeaksNothing) {
    std::string tree;
    const std::size_t failures = RunWithEachAllocationFailing([&] {
        const auto document = CExpatXMLParser::CreateCXMLNodeWithText(XML);
        ASSERT_NE(document, nullptr);
        tree = TreeText(*document->GetRootElement());
    });
    EXPECT_GT(failures, 15u);
    EXPECT_EQ(tree, TreeText(*CExpatXMLParser::CreateCXMLNodeWithText(XML)->GetRootElement()));
}

TEST(CXMLAllocationTest, CloningLeaksNothingAndLeavesTheOriginal) {
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText(XML);
    const std::string before = TreeText(*document->GetRootElement());
    const std::size_t failures =
        RunWithEachAllocationFailing([&] { const std::unique_ptr<CXMLNode> copy(document->Clone()); });
    EXPECT_GT(failures, 15u);
    EXPECT_EQ(TreeText(*document->GetRootElement()), before);
}

TEST(CXMLAllocationTest, FactoriesLeakNothing) {
    const std::size_t failures = RunWithEachAllocationFailing([&] {
        delete CXMLNode::CreateElementWithName(LONG_TEXT);
        delete CXMLNode::CreateElementWithNameWithURI(LONG_TEXT, LONG_TEXT);
        delete CXMLNode::CreateElementWithNameWithStringValue(LONG_TEXT, LONG_TEXT);
        delete CXMLNode::CreateAttributeWithNameWithStringValue(LONG_TEXT, LONG_TEXT);
        delete CXMLNode::CreateTextWithStringValue(LONG_TEXT);
        delete CXMLNode::CreateDocumentWithRootElement(nullptr);
    });
    EXPECT_GE(failures, 14u);
}

TEST(CXMLAllocationTest, FailedChangesLeaveTheElementWhole) {
    CXMLElement element;
    element.InitWithName("e");
    element.AddChild(CXMLNode::CreateElementWithName("child"));
    const std::size_t setText = RunWithEachAllocationFailing([&] {
        EXPECT_EQ(TreeText(element), "e[child[]]");
        element.SetText(LONG_TEXT);
    });
    EXPECT_GE(setText, 2u);
    element.RemoveAllChildren();
}

TEST(CXMLAllocationTest, WritingAssignsTheOutputOnlyWhenDone) {
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText(XML);
    std::string out = "old";
    std::string before = out;
    const std::size_t failures = RunWithEachAllocationFailing([&] {
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
