// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/TableEditor.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "Tests/Support/TemporaryFolder.h"
#include "Tools/zpkpack/Check/CheckRules.h"
#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/TableComments.h"

using zpk_packager::FindingList;
using zpk_packager::TableComments;
using zpk_packager::TableEditor;
using zpk_packager::TableText;

namespace {

const std::string kOK = "ZPKString_OK";
const std::string kError = "ZPKString_Error";

class TableEditorTest : public ::testing::Test {
protected:
    TableText table(const std::string& bytes) {
        zpk_test::writeFile(m_path, bytes);
        FindingList findings;
        std::optional<TableText> table = TableText::read(m_path, findings);
        for (const zpk_packager::Finding& finding : findings.findings()) {
            EXPECT_STREQ(finding.rule->name, "dollar") << bytes;
        }
        return table.value();
    }

    /// The table with the texts put into it, which the launcher's reader finds there.
    std::string edited(const std::string& bytes, const std::map<std::string, std::string>& texts) {
        const TableText before = table(bytes);
        TableEditor editor(before.bytes());
        for (const auto& [key, text] : texts) {
            if (const TableText::Entry* const entry = before.entry(key)) {
                editor.replace(*entry, text);
            } else {
                editor.add(key, text);
            }
        }
        const TableText after = table(editor.result());
        for (const auto& [key, text] : texts) {
            EXPECT_EQ(after.entry(key) == nullptr ? "none" : after.entry(key)->text, text) << bytes;
        }
        return editor.result();
    }

    zpk_test::TemporaryFolder m_folder;
    std::string m_path = m_folder / "ZPKStringTable.def";
};

TEST_F(TableEditorTest, OnlyTheTextChanges) {
    const struct {
        std::string before;
        std::string after;
    } rows[] = {
        {"\"ZPKString_OK\" = \"OK\";", "\"ZPKString_OK\" = \"N\";"},
        {"ZPKString_OK=OK;", "ZPKString_OK=\"N\";"},
        {"ZPKString_OK = ;", "ZPKString_OK = \"N\";"},
        {"ZPKString_OK=\"\";", "ZPKString_OK=\"N\";"},
        {"\xEF\xBB\xBF// one\r\n\"ZPKString_OK\"\t=\t\"O\" \"K\" ;\r\n/* two */",
         "\xEF\xBB\xBF// one\r\n\"ZPKString_OK\"\t=\t\"N\"  ;\r\n/* two */"},
        {"ZPKString_OK = /* a \"=;\" */ O\\\"K // b;\n /* c */;",
         "ZPKString_OK = /* a \"=;\" */ \"N\" // b;\n /* c */;"},
        {"ZPKString_OK = \"a;\\\"=//\n b\";\nx;", "ZPKString_OK = \"N\";\nx;"},
        {"ZPKString_OK = O/**/K;", "ZPKString_OK = \"N\"/**/;"},
    };
    for (const auto& row : rows) {
        const std::string tail = row.before.ends_with("x;") ? "x;" : "";
        EXPECT_EQ(edited(row.before.substr(0, row.before.size() - tail.size()), {{kOK, "N"}}) + tail,
                  row.after);
    }
}

TEST_F(TableEditorTest, AnyTextCanBePut) {
    for (const std::string text :
         {"", "\"", "\\", "\\n", "a\nb\tc", "a;b=c//d/*e*/", "$x$ %s", "\u05D0\u202E", "\U0001D11E", " "}) {
        edited("// c\n\"ZPKString_OK\" = \"OK\";\n", {{kOK, text}, {kError, text}});
    }
}

TEST_F(TableEditorTest, SeveralEntriesAndNewOnesAtTheEnd) {
    EXPECT_EQ(edited("ZPKString_OK=1;\nZPKString_Error=2;\n", {{kOK, "longer"}, {kError, ""}}),
              "ZPKString_OK=\"longer\";\nZPKString_Error=\"\";\n");
    EXPECT_EQ(edited("ZPKString_OK=1;", {{kError, "e"}}), "ZPKString_OK=1;\n\"ZPKString_Error\" = \"e\";\n");
    EXPECT_EQ(edited("", {{kError, "e"}}), "\"ZPKString_Error\" = \"e\";\n");
}

TEST(TableCommentsTest, AreThoseDirectlyAbove) {
    const struct {
        std::string bytes;
        std::size_t line;
        std::string comment;
    } rows[] = {
        {"a = b;", 1, ""},
        {"// one\n//two \n a = b;", 3, "one\ntwo"},
        {"// far\n\n// near\r\na = b;", 4, "near"},
        {"/* one */\na = b;", 2, "one"},
        {"x = y;\n/* one\n   two */\na = b;", 4, "one\ntwo"},
        {"/* a\n\n b */\n// c\na = b;", 5, "a\nb\nc"},
        {"x = y; // its own\na = b;", 2, ""},
        {"no start */\na = b;", 2, "no start"},
        {"// one\n//\n/**/\na = b;", 4, "one"},
        {"// one", 9, "one"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TableComments::above(row.bytes, row.line), row.comment) << row.bytes;
    }
}

}  // namespace
