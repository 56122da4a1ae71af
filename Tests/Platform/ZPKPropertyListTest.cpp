// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKPropertyList.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::TemporaryFolder;
using zpk_test::writeFile;

using Strings = std::vector<std::string>;

const std::string kXmlList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" \"http://example.com/PropertyList-1.0.dtd\">\n"
    "<!-- <dict> in a comment --> <plist version=\"1.0\">\n<dict>\n"
    "  <key>Varno Utilities</key>\n  <array>\n    <string>first</string>\n    <integer>2</integer>\n"
    "    <string>second &amp; \xE6\x97\xA5</string>\n    <string></string>\n    "
    "<array><string>inner</string></array>\n"
    "  </array>\n"
    "  <key>Name</key><string>  a &lt;b&gt; &quot;c&quot; &#65; </string>\n"
    "  <key>Marked</key><string><![CDATA[<x> & y]]> z</string>\n"
    "  <key>Number</key><integer>1</integer>\n  <key>Empty</key><string/>\n  <key>None</key><array/>\n"
    "</dict>\n</plist>\n";

/// The same list as `{ "Varno Utilities": ["first", "second"], "Name": "x" }`, in the binary form.
const unsigned char kBinaryList[] = {
    'b',  'p',  'l',  'i', 's', 't', '0', '0', 0xD2, 1,   2,   3,   4,                             // 8
    0x5F, 0x10, 0x0F, 'V', 'a', 'r', 'n', 'o', ' ',  'U', 't', 'i', 'l', 'i', 't', 'i', 'e', 's',  // 13
    0x54, 'N',  'a',  'm', 'e',                                                                    // 31
    0xA2, 5,    6,                                                                                 // 36
    0x61, 0x65, 0xE5,                                                                              // 39
    0x55, 'f',  'i',  'r', 's', 't',                                                               // 42
    0x56, 's',  'e',  'c', 'o', 'n', 'd',                                                          // 48
    8,    13,   31,   36,  39,  42,  48,                                                           // 55
    0,    0,    0,    0,   0,   0,   1,   1,   0,    0,   0,   0,   0,   0,   0,   7,   0,   0,
    0,    0,    0,    0,   0,   0,   0,   0,   0,    0,   0,   0,   0,   55};

std::string binary() {
    return std::string(std::begin(kBinaryList), std::end(kBinaryList));
}

TEST(ZPKPropertyListTest, ReadsTheXMLForm) {
    const TemporaryFolder folder;
    writeFile(folder / "list.plist", kXmlList);
    const auto list = ZPKPropertyList::dictionaryWithContentsOfFile(folder / "list.plist");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->stringArrayForKey("Varno Utilities"), (Strings{"first", "second & \xE6\x97\xA5", ""}));
    EXPECT_EQ(list->stringForKey("Name"), "  a <b> \"c\" A ");
    EXPECT_EQ(list->stringForKey("Marked"), "<x> & y z");
    EXPECT_EQ(list->stringForKey("Empty"), "");
    EXPECT_EQ(list->stringArrayForKey("None"), Strings{});
    EXPECT_FALSE(list->stringForKey("Number"));
    EXPECT_FALSE(list->stringForKey("Varno Utilities"));
    EXPECT_FALSE(list->stringArrayForKey("Name"));
    EXPECT_FALSE(list->stringForKey("first"));
    EXPECT_FALSE(list->stringArrayForKey("missing"));
    EXPECT_FALSE(list->stringForKey("name")) << "keys are case-sensitive";
}

TEST(ZPKPropertyListTest, ReadsTheXMLFormAfterBlanksOrAByteOrderMarkAndInUTF16) {
    EXPECT_TRUE(ZPKPropertyList::dictionaryWithBytes("\xEF\xBB\xBF" + kXmlList));
    const std::string narrow = "<plist><dict><key>k</key><string>v</string></dict></plist>";
    std::string wide = "\xFF\xFE";
    for (const char character : narrow) {
        wide += character;
        wide += '\0';
    }
    for (const std::string& bytes : {wide, " \t\r\n" + narrow}) {
        const auto list = ZPKPropertyList::dictionaryWithBytes(bytes);
        ASSERT_TRUE(list);
        EXPECT_EQ(list->stringForKey("k"), "v");
    }
}

TEST(ZPKPropertyListTest, ReadsTheBinaryForm) {
    const TemporaryFolder folder;
    writeFile(folder / "list.plist", binary());
    const auto list = ZPKPropertyList::dictionaryWithContentsOfFile(folder / "list.plist");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->stringArrayForKey("Varno Utilities"), (Strings{"first", "second"}));
    EXPECT_EQ(list->stringForKey("Name"), "\xE6\x97\xA5");
}

TEST(ZPKPropertyListTest, RootMustBeADictionary) {
    for (const char* const text :
         {"<plist><array><string>x</string></array></plist>", "<plist><string>x</string></plist>",
          "<plist></plist>", "<plist/>", "(a, b)", "\"text\"", "<dead beef>"}) {
        EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(text)) << text;
    }
}

TEST(ZPKPropertyListTest, MalformedXMLGivesNothing) {
    for (const char* const text :
         {"<plist><dict><key>a</key>", "<plist><dict><key>a</key><string>b</string></dict>",
          "<plist><dict><key>a</key><string>b</dict></plist>", "<plist><dict></array></plist>", "<", "<>",
          "<plist", "<!--", "<?xml", "<![CDATA[", "<!DOCTYPE", "</plist>",
          "<plist><dict><key>a</key><what>b</what></dict></plist>",
          "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><dict/></plist>", "<html><body/></html>",
          "<plist><dict><string>b</string></dict></plist>", "<plist><dict a=\"<\"></dict></plist>"}) {
        EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(text)) << text;
    }
}

TEST(ZPKPropertyListTest, UnreadableFilesGiveNothingAndNeverHang) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0666), 0);
    writeFile(folder / "huge", "a = b;");
    ASSERT_EQ(::truncate((folder / "huge").c_str(), 64 * 1024 * 1024 + 1), 0);
    for (const std::string& path : {folder / "missing", folder / "fifo", folder.path(), folder / "huge",
                                    std::string(), std::string("/dev/zero")}) {
        EXPECT_FALSE(ZPKPropertyList::dictionaryWithContentsOfFile(path)) << path;
    }
}

TEST(ZPKPropertyListTest, EmptyFileHoldsNothing) {
    const auto list = ZPKPropertyList::dictionaryWithBytes("");
    EXPECT_FALSE(list && list->stringForKey(""));
}

TEST(ZPKPropertyListTest, EveryTruncationIsSurvived) {
    const std::string list = binary();
    for (std::size_t length = 0; length < kXmlList.size(); ++length) {
        ZPKPropertyList::dictionaryWithBytes(kXmlList.substr(0, length));
    }
    for (std::size_t length = 1; length < list.size(); ++length) {
        EXPECT_FALSE(ZPKPropertyList::dictionaryWithBytes(list.substr(0, length))) << length;
    }
}

TEST(ZPKPropertyListTest, EveryFlippedBitIsSurvived) {
    for (const std::string& good : {kXmlList, binary()}) {
        for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
            std::string damaged = good;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
            ZPKPropertyList::dictionaryWithBytes(damaged);
        }
    }
}

TEST(ZPKPropertyListTest, ListsMayBeMoved) {
    auto list = ZPKPropertyList::dictionaryWithBytes("a = b;");
    auto other = ZPKPropertyList::dictionaryWithBytes("a = c;");
    ASSERT_TRUE(list && other);
    *list = std::move(*other);
    const ZPKPropertyList moved = std::move(*list);
    EXPECT_EQ(moved.stringForKey("a"), "c");
}

}  // namespace
