// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "Platform/ZPKPropertyList.h"

namespace {

using Strings = std::vector<std::string>;

struct Row {
    const char* name;
    std::string text;
    std::string value;
};

std::string wide(const std::u16string& text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : u"\uFEFF" + text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

/// Each text gives the key "k" the value of its row.
TEST(ZPKPropertyListTextTest, ReadsStrings) {
    const Row rows[] = {
        {"quoted", R"("k" = "v";)", "v"},
        {"unquoted", "k = v;", "v"},
        {"single quotes", "'k' = 'it is \"v\"';", "it is \"v\""},
        {"unquoted punctuation", "k=/usr/x_y-1.2:$z;", "/usr/x_y-1.2:$z"},
        {"no blanks", R"("k"="v";)", "v"},
        {"braces", "{ k = v; }", "v"},
        {"braces in space", " \n{k=v;}\n /* end */ ", "v"},
        {"empty value", R"(k = "";)", ""},
        {"block comment", "/* one */ k /* two */ = /**/ v /* ; */ ; /* end */", "v"},
        {"line comment", "// k = wrong;\nk = v; // end", "v"},
        {"line comment with CR", "// k = wrong;\rk = v;", "v"},
        {"comment marks in quotes", R"(k = "/* v */ // w";)", "/* v */ // w"},
        {"comment after a bare word", "k = v//end\n;", "v"},
        {"escaped quote and backslash", R"(k = "a\"b\\c";)", "a\"b\\c"},
        {"escaped controls", R"(k = "\n\t\r\a\b\f\v";)", "\n\t\r\a\b\f\v"},
        {"escaped other", R"(k = "\q\'\/";)", "q'/"},
        {"octal", R"(k = "\101\12x\0603";)", "A\nx03"},
        {"code unit", R"(k = "\U65e5\u0041\U9x";)",
         "\xE6\x97\xA5"
         "A\tx"},
        {"surrogate pair", R"(k = "\Ud83d\Ude00";)", "\xF0\x9F\x98\x80"},
        {"lone high surrogate", R"(k = "\Ud83d\n\Ud83d\U0041";)",
         "\xEF\xBF\xBD\n\xEF\xBF\xBD"
         "A"},
        {"lone low surrogate", R"(k = "\Ude00";)", "\xEF\xBF\xBD"},
        {"raw newline", "k = \"a\nb\";", "a\nb"},
        {"UTF-8", "k = \"\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80\";", "\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80"},
        {"UTF-8 with its mark", "\xEF\xBB\xBFk = v;", "v"},
        {"UTF-16 little endian", wide(u"k = \"\u65e5\U0001F600\";", false), "\xE6\x97\xA5\xF0\x9F\x98\x80"},
        {"UTF-16 big endian", wide(u"\"k\" = v;", true), "v"},
        {"UTF-16 lone surrogate", wide(u"k = \"\xD83D\";", true), "\xEF\xBF\xBD"},
        {"last pair wins", "k = first; k = v;", "v"},
        {"beside other kinds", "a = (1, 2); d = { x = y; z = { q = (r); }; }; b = <0fbd 77>; k = v;", "v"},
    };
    for (const Row& row : rows) {
        const auto list = ZPKPropertyList::dictionaryWithBytes(row.text);
        ASSERT_TRUE(list) << row.name;
        EXPECT_EQ(list->stringForKey("k"), row.value) << row.name;
    }
}

TEST(ZPKPropertyListTextTest, ReadsArrays) {
    struct ArrayRow {
        const char* text;
        Strings value;
    };
    const ArrayRow rows[] = {
        {"k = (a, \"b c\", 'd');", {"a", "b c", "d"}},
        {"k = ();", {}},
        {"k = ( /* none */ );", {}},
        {"k = (a,);", {"a"}},
        {"k = (a, (x), {y = z;}, <00>, b);", {"a", "b"}},
    };
    for (const ArrayRow& row : rows) {
        const auto list = ZPKPropertyList::dictionaryWithBytes(row.text);
        ASSERT_TRUE(list) << row.text;
        EXPECT_EQ(list->stringArrayForKey("k"), row.value) << row.text;
        EXPECT_FALSE(list->stringForKey("k")) << row.text;
    }
}

TEST(ZPKPropertyListTextTest, TextWithoutPairsHoldsNothing) {
    for (const char* const text : {"", " \n", "/* only */", "// only", "{}", "{ /* x */ }"}) {
        const auto list = ZPKPropertyList::dictionaryWithBytes(text);
        ASSERT_TRUE(list) << text;
        EXPECT_FALSE(list->stringForKey("only")) << text;
    }
}

TEST(ZPKPropertyListTextTest, SyntaxErrorsGiveNothing) {
    const std::string texts[] = {
        "k",
        "k =",
        "k = v",
        "k = v; x",
        "k = \"v;",
        "k = 'v;",
        "k v;",
        "= v;",
        "k == v;",
        "k = v;;",
        "{ k = v;",
        "k = v; }",
        "{ k = v; } x",
        "{{}}",
        "/* k = v;",
        "k = (a",
        "k = (a b);",
        "k = (,);",
        "k = (a;);",
        "k = (a,,b);",
        "k = {a = b};",
        "k = {a = b;;",
        "k = <0>;",
        "k = <0g>;",
        "k = <00;",
        "k = \"\\",
        "k = \"\\Ux\";",
        "k = \xC3\xA9;",
        "k = \"\xC3\";",
        "k = \"\xED\xA0\x80\";",
        "k = \"\xC0\x80\";",
        "k = \"\xF4\x90\x80\x80\";",
        std::string("k = \"a\0b\";", 10),
        "\xFF\xFEk",
        std::string("\xFE\xFF\x00", 3),
        "; ",
        "k = ;",
        "!",
        "k = v; !",
        "/",
        "k = /*",
    };
    for (const std::string& text : texts) {
        EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(text)) << text;
    }
}

}  // namespace
