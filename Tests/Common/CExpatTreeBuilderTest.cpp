// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// What the trees of documents are is tested with the parser; here only where things stand in the input.

#include "Common/CExpatTreeBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using varno_zpk::CExpatTreeBuilder;
using varno_zpk::CXMLElement;

bool parse(CExpatTreeBuilder& builder, const std::string& text) {
    return builder.Parse(text.data(), static_cast<int>(text.size()), true);
}

std::string placeText(const CExpatTreeBuilder::Place& place) {
    return std::to_string(place.line) + ":" + std::to_string(place.column) + "@" +
           std::to_string(place.offset);
}

TEST(CExpatTreeBuilderTest, ListenerIsToldWhereEachElementStands) {
    const std::string text = "<a>\n  <b/>\xC3\xA9<c\n x='1'></c>\r\n</a>";
    CExpatTreeBuilder builder(nullptr, text.size());
    std::vector<std::string> told;
    builder.SetElementListener([&](const CXMLElement& element, const CExpatTreeBuilder::Place& place) {
        told.push_back(element.GetNameString() + " " + placeText(place));
    });
    ASSERT_TRUE(parse(builder, text));
    EXPECT_EQ(told, (std::vector<std::string>{"a 1:1@0", "b 2:3@6", "c 2:8@12"}));
}

struct Row {
    const char* name;
    std::string text;
    const char* reason;
    const char* place;
    bool isOfEncoding;
};

class CExpatTreeBuilderRefusalTest : public ::testing::TestWithParam<Row> {};

TEST_P(CExpatTreeBuilderRefusalTest, SaysWhyAndWhere) {
    const Row& row = GetParam();
    CExpatTreeBuilder builder(nullptr, row.text.size());
    ASSERT_FALSE(parse(builder, row.text));
    const CExpatTreeBuilder::Refusal refusal = builder.GetRefusal();
    EXPECT_EQ(refusal.reason, row.reason);
    EXPECT_EQ(placeText(refusal.place), row.place);
    EXPECT_EQ(refusal.isOfEncoding, row.isOfEncoding);
}

std::string nested(std::size_t depth) {
    std::string text;
    for (std::size_t level = 0; level < depth; ++level) {
        text += "<a>\n";
    }
    return text;
}

std::string entities(std::size_t count) {
    std::string text = "<!DOCTYPE a [\n";
    for (std::size_t number = 0; number < count; ++number) {
        text += "<!ENTITY e" + std::to_string(number) + " ''>\n";
    }
    return text + "]><a/>";
}

INSTANTIATE_TEST_SUITE_P(Refusals, CExpatTreeBuilderRefusalTest,
                         ::testing::Values(Row{"Empty", "", "no element found", "1:1@0", false},
                                           Row{"WrongEndTag", "<a>\n </b>", "mismatched tag", "2:4@7", false},
                                           Row{"Encoding", "<?xml version='1.0' encoding='none'?><a/>",
                                               "unknown encoding", "1:31@30", true},
                                           Row{"Depth", nested(CExpatTreeBuilder::kMaximumDepth + 2),
                                               "its elements are nested too deeply", "1001:1@4000", false},
                                           Row{"Entities", entities(CExpatTreeBuilder::kMaximumEntities + 1),
                                               "it declares too many entities", "1002:16@17919", false}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
