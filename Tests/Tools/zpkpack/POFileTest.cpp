// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/POFile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Tools/zpkpack/PackagerFixture.h"
#include "Tools/zpkpack/POReader.h"

using namespace std::string_literals;
using zpk_packager::POFile;
using zpk_packager::POReader;
using zpk_test::failureOf;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

namespace {

const std::string kHeader =
    "msgid \"\"\n"
    "msgstr \"Language: de\\nContent-Type: text/plain; charset=utf-8\\n\"\n";

POFile parse(const std::string& bytes) {
    return POReader("de.po", bytes).read();
}

std::string reasonFor(const std::string& bytes) {
    return failureOf([&] { static_cast<void>(parse(bytes)); });
}

std::string message(const std::string& text) {
    return "msgctxt \"k\"\nmsgid \"i\"\nmsgstr " + text + "\n";
}

TEST(POFileTest, WhatIsWrittenIsReadAgain) {
    const std::vector<std::string> texts = {"",
                                            "plain",
                                            "\"quoted\" and \\back\\slashed\\",
                                            "$Data$ 100 %",
                                            "\n",
                                            "one\ntwo\n\nfour",
                                            "\nedges\n",
                                            "tab\tbell\a escape\x1b delete\x7f",
                                            "\u05D0\u202E\u200F\u0661",
                                            "\U0001D11E\U0010FFFD",
                                            "\\n is no line end",
                                            "# no comment"};
    POFile file{"pt_BR", {}, 0};
    for (const std::string& text : texts) {
        file.messages.push_back({"key " + text, "id " + text, text, text.empty(), !text.empty(), "a\nb", 0});
    }
    const POFile again = parse(file.bytes());
    EXPECT_EQ(again.language, "pt_BR");
    ASSERT_EQ(again.messages.size(), texts.size());
    for (std::size_t index = 0; index < texts.size(); ++index) {
        EXPECT_EQ(again.messages[index].context, "key " + texts[index]);
        EXPECT_EQ(again.messages[index].id, "id " + texts[index]);
        EXPECT_EQ(again.messages[index].text, texts[index]);
        EXPECT_EQ(again.messages[index].isFuzzy, texts[index].empty());
    }
}

TEST(POFileTest, OtherProgramsWriteItOtherwise) {
    const POFile file =
        parse("# Names\r\n#\r\n" + kHeader +
              "\r\n#: place:1\n#. words\n#, c-format, fuzzy\n#| msgid \"before\"\n"
              "  msgctxt\t\"k\" \"1\"\r\nmsgid\"i\"\n\"j\"\nmsgstr \"\"\n\n\t\"a\" \"b\"\n\"\\103\\x44\"\n"
              "msgctxt \"k2\"\nmsgid \"\"\nmsgstr \"c\"\n#~ msgid \"gone\"\n#~ msgstr \"gone\"\n");
    EXPECT_EQ(file.language, "de");
    ASSERT_EQ(file.messages.size(), 2U);
    EXPECT_EQ(file.messages[0].context, "k1");
    EXPECT_EQ(file.messages[0].id, "ij");
    EXPECT_EQ(file.messages[0].text, "abCD");
    EXPECT_TRUE(file.messages[0].isFuzzy);
    EXPECT_EQ(file.messages[0].line, 10U);
    EXPECT_EQ(file.messages[1].text, "c");
    EXPECT_FALSE(file.messages[1].isFuzzy);
}

TEST(POFileTest, WhatIsDamagedIsRefusedWithItsLine) {
    const struct {
        std::string bytes;
        std::string reason;
    } rows[] = {
        {"", "de.po:1: there is no header, which tells charset and language"},
        {"# nothing\n", "de.po:1: there is no header, which tells charset and language"},
        {message("\"t\""), "de.po:1: there is no header before it, which tells charset and language"},
        {"msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=ISO-8859-1\\n\"\n",
         "de.po:1: the charset of the header is not UTF-8"},
        {"msgid \"\"\nmsgstr \"\"\n", "de.po:1: the charset of the header is not UTF-8"},
        {kHeader + "\xFF\xFEm", "de.po:3: the bytes from here on are no UTF-8"},
        {kHeader + "# \xFC\n", "de.po:3: the bytes from here on are no UTF-8"},
        {kHeader + "\n# \0\n"s, "de.po:4: there is a null character"},
        {"\xEF\xBB\xBF" + kHeader, "de.po:1: this is no line of a PO file"},
        {kHeader + "word \"t\"\n", "de.po:3: this is no line of a PO file"},
        {kHeader + "domain \"t\"\n", "de.po:3: this is no line of a PO file"},
        {kHeader + "msgctxt \"k\"\nmsgid \"i\"\nmsgid_plural \"is\"\n",
         "de.po:5: a string table has no plural forms"},
        {kHeader + "msgctxt \"k\"\nmsgid \"i\"\nmsgstr[0] \"is\"\n",
         "de.po:5: a string table has no plural forms"},
        {kHeader + "msgid \"i\"\nmsgstr \"t\"\n", "de.po:3: there is no msgctxt, which names the key"},
        {kHeader + "msgctxt \"k\"\nmsgstr \"t\"\n",
         "de.po:4: msgctxt, msgid and msgstr have to follow each other in this order"},
        {kHeader + "msgctxt \"k\"\nmsgid \"i\"\nmsgctxt \"k\"\n",
         "de.po:5: msgctxt, msgid and msgstr have to follow each other in this order"},
        {kHeader + "msgctxt \"k\"\nmsgid \"i\"\n", "de.po:4: the file ends within a message"},
        {kHeader + message("t"), "de.po:5: a text lacks its quotation mark"},
        {kHeader + message(""), "de.po:5: a text lacks its quotation mark"},
        {kHeader + message("\"t\" u"), "de.po:5: a text lacks its quotation mark"},
        {kHeader + message("\"t"), "de.po:5: a text does not end in its line"},
        {kHeader + message("\"t\\\""), "de.po:5: a text does not end in its line"},
        {kHeader + message("\"t\\"), "de.po:5: there is no such escape"},
        {kHeader + message("\"\\q\""), "de.po:5: there is no such escape"},
        {kHeader + message("\"\\u00e4\""), "de.po:5: there is no such escape"},
        {kHeader + message("\"\\0\""), "de.po:5: the number of an escape is that of no character"},
        {kHeader + message("\"\\x\""), "de.po:5: the number of an escape is that of no character"},
        {kHeader + message("\"\\777\""), "de.po:5: the number of an escape is that of no character"},
        {kHeader + message("\"\\xff\""), "de.po:3: with its escapes a text is no UTF-8"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(reasonFor(row.bytes), row.reason) << row.bytes;
    }
    EXPECT_EQ(reasonFor("\"text\"\n"), "de.po:1: a text stands without msgctxt, msgid or msgstr");
}

TEST(POFileTest, EveryCutOfAFileIsReadOrRefused) {
    const std::string whole = kHeader + "#, fuzzy\n" + message("\"a\\\"\\x41\\101ü\"\n\"b\"") + "# end\n";
    EXPECT_EQ(parse(whole).messages.at(0).text, "a\"AAüb");
    std::size_t refused = 0;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        refused += reasonFor(whole.substr(0, size)).empty() ? 0U : 1U;
    }
    EXPECT_GT(refused, kHeader.size());
}

TEST(POFileTest, WhatIsNoFileOrTooLargeIsRefused) {
    const TemporaryFolder folder;
    const std::string path = folder / "de.po";
    const auto reason = [&] { return failureOf([&] { static_cast<void>(POFile::read(path)); }); };
    EXPECT_EQ(reason(), path + ":1: No such file or directory");
    writeFile(path, kHeader + std::string(std::size_t{16} << 20, '\n'));
    EXPECT_EQ(reason(), path + ":1: File too large");
    writeFile(path, kHeader);
    EXPECT_EQ(reason(), "");
}

}  // namespace
