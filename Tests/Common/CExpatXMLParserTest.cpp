// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CExpatXMLParser.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

#include "Common/CExpatTreeBuilder.h"
#include "Common/CXMLElement.h"
#include "Tests/Common/XMLTreeText.h"
#include "Tests/Support/InstructionCount.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/VirtualSlot.h"

namespace {

using namespace varno_zpk;
using namespace std::string_literals;
using zpk_test::treeText;
using zpk_test::virtualSlot;

const char* const kMalformed = "malformed";

std::string treeTextOf(const std::unique_ptr<CXMLDocument>& document) {
    return document != nullptr ? treeText(*document->GetRootElement()) : kMalformed;
}

std::string treeOfText(const std::string& xml) {
    return treeTextOf(
        std::unique_ptr<CXMLDocument>(CExpatXMLParser().CreateXMLDocumentWithXMLContents(xml.c_str())));
}

/// The tree of a file with these bytes.
std::string treeOfFile(const std::string& bytes) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "in.xml", bytes);
    return treeTextOf(std::unique_ptr<CXMLDocument>(
        CExpatXMLParser().CreateXMLDocumentWithPath((folder / "in.xml").c_str())));
}

/// The tree of the file at `path`, given to the parser in pieces of `blockSize` bytes.
std::string treeOfFileInBlocks(const std::string& path, std::size_t blockSize) {
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(path);
    return file ? treeTextOf(CExpatXMLParser::CreateCXMLNodeWithFile(*file, blockSize)) : "no file";
}

class DefaultParserAccess : public CXMLParser {
public:
    static CXMLParser* current() { return s_DefaultParser; }
    static void replace(CXMLParser* parser) { s_DefaultParser = parser; }
};

/// A default parser that tells when it is deleted.
class WatchedParser : public CExpatXMLParser {
public:
    explicit WatchedParser(int& deaths) : m_deaths(deaths) {}
    ~WatchedParser() override { ++m_deaths; }

private:
    int& m_deaths;
};

TEST(CXMLParserTest, VirtualOperationsAreInSlotOrder) {
    EXPECT_EQ(virtualSlot(&CXMLParser::CreateXMLDocumentWithPath), 3u);
    EXPECT_EQ(virtualSlot(&CXMLParser::CreateXMLDocumentWithXMLContents), 4u);
    EXPECT_EQ(virtualSlot(&CXMLParser::WriteXMLDocumentToFile), 5u);
    EXPECT_EQ(virtualSlot(&CXMLParser::WriteXMLDocumentToString), 6u);
    EXPECT_TRUE(std::is_abstract_v<CXMLParser>);
    EXPECT_EQ(sizeof(CExpatXMLParser), sizeof(void*));
}

TEST(CXMLParserTest, DefaultParserIsMadeOnFirstUseAndKept) {
    EXPECT_EQ(DefaultParserAccess::current(), nullptr);
    CXMLParser* parser = CXMLParser::GetDefaultParser();
    EXPECT_NE(dynamic_cast<CExpatXMLParser*>(parser), nullptr);
    EXPECT_EQ(DefaultParserAccess::current(), parser);
    EXPECT_EQ(CXMLParser::GetDefaultParser(), parser);
    CXMLParser::Finalize();
}

TEST(CXMLParserTest, FinalizeDeletesTheDefaultParser) {
    int deaths = 0;
    CXMLParser::Finalize();
    DefaultParserAccess::replace(new WatchedParser(deaths));
    CXMLParser::Finalize();
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(DefaultParserAccess::current(), nullptr);
    CXMLParser::Finalize();
    EXPECT_EQ(deaths, 1);
    EXPECT_NE(CXMLParser::GetDefaultParser(), nullptr);
    CXMLParser::Finalize();
}

struct Row {
    const char* name;
    std::string xml;
    std::string tree;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

std::string rowName(const ::testing::TestParamInfo<Row>& row) {
    return row.param.name;
}

class CExpatXMLParserTextTest : public ::testing::TestWithParam<Row> {};

TEST_P(CExpatXMLParserTextTest, TextGivesTheTree) {
    EXPECT_EQ(treeOfText(GetParam().xml), GetParam().tree);
}

INSTANTIATE_TEST_SUITE_P(
    WhiteSpace, CExpatXMLParserTextTest,
    ::testing::Values(
        Row{"IsDroppedBetweenElements", "<a>\n  <b/>\t<c/>\r\n</a>", "a[b[] c[]]"},
        Row{"IsKeptAsTheOnlyContent", "<a> \n\t</a>", "a[' \n\t']"},
        Row{"IsKeptAsTheOnlyContentOfAChild", "<a> <b> </b> </a>", "a[b[' ']]"},
        Row{"IsKeptAroundText", "<a> x <b/> y </a>", "a[' x ' b[] ' y ']"},
        Row{"IsDroppedBetweenTextAndElements", "<a>x<b/> <c/>y</a>", "a['x' b[] c[] 'y']"},
        Row{"SplitByACommentIsKeptAsTheOnlyContent", "<a> <!--c-->\n</a>", "a[' ' '\n']"},
        Row{"SplitByACommentIsDroppedBesideAnElement", "<a> <!--c-->\n<b/> <!--d-->\n</a>", "a[b[]]"},
        Row{"SplitFromTextIsKeptWithoutAnElement", "<a> <!--c-->x</a>", "a[' ' 'x']"},
        Row{"SplitFromTextIsDroppedBesideAnElement", "<a> <!--c-->x<b/></a>", "a['x' b[]]"},
        Row{"OutsideTheRootLeavesNothing", "\n <a/> \n", "a[]"},
        Row{"CarriageReturnReferenceIsKeptBesideElements", "<a>&#xD;<b/>&#13;</a>", "a['\r' b[] '\r']"},
        Row{"OtherReferencesAreKeptBesideElements", "<a>&#x20;<b/>&#9;<c/>&#xA;</a>",
            "a[' ' b[] '\t' c[] '\n']"},
        Row{"ReferenceKeepsTheLiteralBlanksAroundIt", "<a>\n &#xD; <b/> </a>", "a['\n \r ' b[]]"},
        Row{"InCdataIsLiteral", "<a><![CDATA[ ]]><b/></a>", "a[b[]]"},
        Row{"InAnEntityIsLiteral", "<!DOCTYPE a [<!ENTITY e ' <b/> <c/>'>]><a>&e;</a>", "a[b[] c[]]"},
        Row{"ReferenceInAnEntityIsKept", "<!DOCTYPE a [<!ENTITY e '&#38;#xD;<b/>'>]><a>&e;</a>",
            "a['\r' b[]]"},
        Row{"NoBreakSpaceIsText", "<a>\xC2\xA0<b/></a>", "a['\xC2\xA0' b[]]"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Text, CExpatXMLParserTextTest,
    ::testing::Values(
        Row{"CdataAndReferencesJoinTheirNeighbours", "<a>x<![CDATA[<&>]]>y&amp;&#65;&#x42;z</a>",
            "a['x<&>y&ABz']"},
        Row{"CommentSplits", "<a>x<!--c-->y</a>", "a['x' 'y']"},
        Row{"ProcessingInstructionSplits", "<a>x<?p q?>y</a>", "a['x' 'y']"},
        Row{"LineEndsBecomeLineFeeds", "<a>x\r\ny\rz</a>", "a['x\ny\nz']"},
        Row{"CarriageReturnReferenceIsKept", "<a>x&#xD;y</a>", "a['x\ry']"},
        Row{"InternalEntityIsResolved", "<!DOCTYPE a [<!ENTITY e 'in'>]><a>x&e;y</a>", "a['xiny']"},
        Row{"ElementInAnEntityIsBuilt", "<!DOCTYPE a [<!ENTITY e 'x<b>y</b>'>]><a>w&e;z</a>",
            "a['wx' b['y'] 'z']"},
        Row{"EmptyCdataIsNoText", "<a><![CDATA[]]></a>", "a[]"},
        Row{"ManyBytesOfUTF8", "<a>\xE6\x97\xA5\xF0\x9F\x98\x80</a>", "a['\xE6\x97\xA5\xF0\x9F\x98\x80']"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Structure, CExpatXMLParserTextTest,
    ::testing::Values(Row{"AttributesKeepTheirOrder", "<a z='1' b='2' m='3'/>", "a(z='1' b='2' m='3')[]"},
                      Row{"AttributeWhiteSpaceIsNormalised", "<a x='1\n2\t3&#10;4'/>", "a(x='1 2 3\n4')[]"},
                      Row{"NamespaceDeclarationsAreDropped",
                          "<p:a xmlns='urn:d' xmlns:p='urn:p' p:x='1' xmlnsy='2' xml:lang='en'/>",
                          "p:a(p:x='1' xmlnsy='2' xml:lang='en')[]"},
                      Row{"UndeclaredPrefixIsKept", "<q:a r:b='1'/>", "q:a(r:b='1')[]"},
                      Row{"CommentsInstructionsAndDocumentTypeAreDropped",
                          "<?xml version='1.0'?><!--1--><?p q?><!DOCTYPE a [<!ELEMENT a ANY><!--2--><?p q?>]>"
                          "<a><!--3--><b/><?p q?></a><!--4--><?p q?>",
                          "a[b[]]"},
                      Row{"AttributeDefaultOfTheInternalSubsetIsGiven",
                          "<!DOCTYPE a [<!ATTLIST a x CDATA 'd'>]><a y='1'/>", "a(y='1' x='d')[]"},
                      Row{"ByteOrderMarkIsSkipped", "\xEF\xBB\xBF<a/>", "a[]"},
                      Row{"DeclaredEncodingOfATextDoesNotCount",
                          "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA9</a>", "a['\xC3\xA9']"},
                      Row{"NamesAreCaseSensitive", "<a><B/><b/></a>", "a[B[] b[]]"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Malformed, CExpatXMLParserTextTest,
    ::testing::Values(
        Row{"Empty", "", kMalformed}, Row{"OnlyWhiteSpace", " \n", kMalformed},
        Row{"NoRoot", "<?xml version='1.0'?><!--c-->", kMalformed}, Row{"TwoRoots", "<a/><b/>", kMalformed},
        Row{"TextOutsideTheRoot", "<a/>x", kMalformed}, Row{"Unclosed", "<a><b></b>", kMalformed},
        Row{"WrongEndTag", "<a></b>", kMalformed}, Row{"SameAttributeTwice", "<a x='1' x='2'/>", kMalformed},
        Row{"UnquotedAttribute", "<a x=1/>", kMalformed}, Row{"UndefinedEntity", "<a>&e;</a>", kMalformed},
        Row{"BareAmpersand", "<a>&</a>", kMalformed}, Row{"LessThanInAnAttribute", "<a x='<'/>", kMalformed},
        Row{"ControlCharacter", "<a>\x01</a>", kMalformed}, Row{"ReferenceToNUL", "<a>&#0;</a>", kMalformed},
        Row{"InvalidUTF8", "<a>\xC3\x28</a>", kMalformed}, Row{"OverlongUTF8", "<a>\xC0\xAF</a>", kMalformed},
        Row{"SurrogateInUTF8", "<a>\xED\xA0\x80</a>", kMalformed},
        Row{"DeclarationNotAtTheStart", " <?xml version='1.0'?><a/>", kMalformed},
        Row{"EntityThatHoldsItself", "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>", kMalformed}),
    rowName);

std::string utf16(const std::string& ascii) {
    std::string bytes = "\xFF\xFE";
    for (const char character : ascii) {
        bytes += character;
        bytes += '\0';
    }
    return bytes;
}

class CExpatXMLParserFileTest : public ::testing::TestWithParam<Row> {};

TEST_P(CExpatXMLParserFileTest, BytesGiveTheTree) {
    EXPECT_EQ(treeOfFile(GetParam().xml), GetParam().tree);
}

INSTANTIATE_TEST_SUITE_P(
    Encodings, CExpatXMLParserFileTest,
    ::testing::Values(
        Row{"UTF8", "<a>\xC3\xA9</a>", "a['\xC3\xA9']"},
        Row{"UTF8WithByteOrderMark", "\xEF\xBB\xBF<a>\xC3\xA9</a>", "a['\xC3\xA9']"},
        Row{"UTF16LittleEndian", "\xFF\xFE<\0a\0>\0\xE9\0<\0/\0a\0>\0"s, "a['\xC3\xA9']"},
        Row{"UTF16BigEndian", "\xFE\xFF\0<\0a\0>\0\xE9\0<\0/\0a\0>"s, "a['\xC3\xA9']"},
        Row{"ISO88591", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "a['\xC3\xA9']"},
        Row{"ISO88592", "<?xml version='1.0' encoding='ISO-8859-2'?><a>\xE8</a>", "a['\xC4\x8D']"},
        Row{"Windows1252", "<?xml version='1.0' encoding='windows-1252'?><a>\x80</a>", "a['\xE2\x82\xAC']"},
        Row{"ByteThatTheEncodingDoesNotHave", "<?xml version='1.0' encoding='windows-1252'?><a>\x81</a>",
            kMalformed},
        Row{"ShiftJIS",
            "<?xml version='1.0' encoding='Shift_JIS'?><\x83\x5C x='\x95\x5C'>\x93\xFA\\\xB1</\x83\x5C>",
            "\u30BD(x='\u8868')['\u65E5\\\uFF71']"},
        Row{"EUCJP", "<?xml version='1.0' encoding='EUC-JP'?><a>\xC6\xFC\x8F\xB0\xA1</a>",
            "a['\u65E5\u4E02']"},
        Row{"EUCKR", "<?xml version='1.0' encoding='EUC-KR'?><a>\xC7\xD1</a>", "a['\uD55C']"},
        Row{"Big5", "<?xml version='1.0' encoding='Big5'?><a>\xA5\x5C</a>", "a['\u529F']"},
        Row{"GB18030", "<?xml version='1.0' encoding='GB18030'?><a>\xD6\xD0\x94\x39\xDA\x33</a>",
            "a['\u4E2D\U0001F4A9']"},
        Row{"CharacterCutShortAtTheEnd", "<?xml version='1.0' encoding='Shift_JIS'?><a/>\x93", kMalformed},
        Row{"CharacterThatTakesInATag", "<?xml version='1.0' encoding='Shift_JIS'?><a>\x93</a>", kMalformed},
        Row{"UTF8ThatClaimsToBeShiftJIS",
            "<?xml version='1.0' encoding='Shift_JIS'?><a>\u65E5\u672C\u8A9E</a>", kMalformed},
        Row{"UTF8ThatClaimsToBeEUCKR", "<?xml version='1.0' encoding='EUC-KR'?><a>\u65E5</a>", kMalformed},
        Row{"EUCJPThatClaimsToBeUTF8", "<?xml version='1.0' encoding='UTF-8'?><a>\xC6\xFC</a>", kMalformed},
        Row{"ByteOrderMarkBeforeAnotherEncoding", "\xEF\xBB\xBF<?xml version='1.0' encoding='EUC-JP'?><a/>",
            kMalformed},
        Row{"UTF16ThatClaimsToBeBig5", utf16("<?xml version='1.0' encoding='Big5'?><a/>"), kMalformed},
        Row{"ControlCharacterOfAnotherEncoding", "<?xml version='1.0' encoding='Shift_JIS'?><a>\x01</a>",
            kMalformed},
        Row{"EncodingThatDoesNotHoldASCII", "<?xml version='1.0' encoding='IBM037'?><a/>", kMalformed},
        Row{"StatefulEncoding", "<?xml version='1.0' encoding='UTF-7'?><a>+AGE-</a>", kMalformed},
        Row{"UnknownEncoding", "<?xml version='1.0' encoding='no-such-thing'?><a/>", kMalformed},
        Row{"EncodingThatContradictsTheBytes", "<?xml version='1.0' encoding='UTF-16'?><a/>", kMalformed},
        Row{"OddNumberOfBytesInUTF16", "\xFF\xFE<\0a\0/\0>\0\x20"s, kMalformed},
        Row{"NULByteInText", "<a>x\0y</a>"s, kMalformed}, Row{"NULByteAfterTheRoot", "<a/>\0"s, kMalformed},
        Row{"EmptyFile", "", kMalformed}, Row{"NULBytesOnly", std::string(5000, '\0'), kMalformed}),
    rowName);

TEST(CExpatXMLParserTest, RootOfAReadDocumentHasNoParent) {
    CExpatXMLParser parser;
    const std::unique_ptr<CXMLDocument> document(parser.CreateXMLDocumentWithXMLContents("<a/>"));
    EXPECT_EQ(document->GetKind(), XMLKIND_DOCUMENT);
    EXPECT_EQ(document->GetRootElement()->GetRootDocument(), nullptr);
}

TEST(CExpatXMLParserTest, WhatIsNoReadableFileGivesNull) {
    const zpk_test::TemporaryFolder folder;
    CExpatXMLParser parser;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("nowhere", (folder / "link").c_str()), 0);
    ASSERT_EQ(::symlink("loop", (folder / "loop").c_str()), 0);
    for (const std::string& path :
         {folder / "missing.xml", folder.path(), folder / "pipe", folder / "link", folder / "loop",
          std::string(), "/dev/zero"s, "/"s + std::string(5000, 'x')}) {
        EXPECT_EQ(parser.CreateXMLDocumentWithPath(path.c_str()), nullptr) << path;
    }
}

TEST(CExpatXMLParserTest, UnreadableFileGivesNull) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "in.xml", "<a/>");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod((folder / "in.xml").c_str(), 0), 0);
    // Root reads every file, so the test goes on as nobody.
    const uid_t user = ::geteuid();
    ASSERT_TRUE(user != 0 || ::seteuid(65534) == 0);
    const std::unique_ptr<CXMLDocument> document(
        CExpatXMLParser().CreateXMLDocumentWithPath((folder / "in.xml").c_str()));
    ASSERT_EQ(::seteuid(user), 0);
    EXPECT_EQ(document, nullptr);
}

TEST(CExpatXMLParserTest, FileIsReadThroughALink) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "in.xml", "<a/>");
    ASSERT_EQ(::symlink("in.xml", (folder / "link").c_str()), 0);
    const std::unique_ptr<CXMLDocument> document(
        CExpatXMLParser().CreateXMLDocumentWithPath((folder / "link").c_str()));
    EXPECT_EQ(treeTextOf(document), "a[]");
}

TEST(CExpatXMLParserTest, ReadingLeavesNoDescriptorOpen) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "good.xml", "<a/>");
    zpk_test::writeFile(folder / "bad.xml", "<a");
    const int before = ::dup(0);
    ::close(before);
    for (const char* name : {"good.xml", "bad.xml"}) {
        delete CExpatXMLParser().CreateXMLDocumentWithPath((folder / name).c_str());
    }
    const int after = ::dup(0);
    ::close(after);
    EXPECT_EQ(after, before);
}

TEST(CExpatXMLParserTest, EveryBlockSizeGivesTheSameTree) {
    const std::string xml =
        "\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!DOCTYPE a [<!ENTITY e 'in&#33;'>]>\r\n"
        "<a x='1&amp;\r\n2'>\r\n <b>\xE6\x97\xA5&e;&#x42;]]&gt;<![CDATA[ ]] ]]>\r\n</b> <!-- c --> "
        "<d/>t\r</a>\r\n";
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "in.xml", xml);
    const std::string expected = treeOfFile(xml);
    EXPECT_EQ(expected, "a(x='1& 2')[b['\xE6\x97\xA5in!B]]> ]] \n'] d[] 't\n']");
    for (std::size_t blockSize = 1; blockSize <= xml.size() + 1; ++blockSize) {
        EXPECT_EQ(treeOfFileInBlocks(folder / "in.xml", blockSize), expected) << blockSize;
    }
}

TEST(CExpatXMLParserTest, EveryBlockSizeGivesTheSameTreeInAnotherEncoding) {
    const std::string xml =
        "<?xml version='1.0' encoding='GB18030'?>\r\n<a x='\xD6\xD0'>\x81\x30\x81\x30\x94\x39\xDA\x33</a>";
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "in.xml", xml);
    for (std::size_t blockSize = 1; blockSize <= xml.size() + 1; ++blockSize) {
        EXPECT_EQ(treeOfFileInBlocks(folder / "in.xml", blockSize), "a(x='\u4E2D')['\u0080\U0001F4A9']")
            << blockSize;
    }
}

TEST(CExpatXMLParserTest, EveryBlockSizeAndEncodingTellsReferencesFromLiteralBlanks) {
    const std::string xml =
        "<!DOCTYPE a [<!ENTITY e ' <i/> &#38;#9;'>]><a>&#xD;<b/>\r\n<c/>&#x0009;\r<d/> &#10; <e/>\r"
        "<f>&#32;</f>\n\t<g> </g>&e;<h/>&#" +
        std::string(1500, '0') + "32;</a>";
    const std::string expected = "a['\r' b[] c[] '\t\n' d[] ' \n ' e[] f[' '] g[' '] i[] ' \t' h[] ' ']";
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "utf8.xml", xml);
    zpk_test::writeFile(folder / "utf16.xml", utf16(xml));
    zpk_test::writeFile(folder / "decoded.xml", "<?xml version='1.0' encoding='GB18030'?>" + xml);
    for (const char* name : {"utf8.xml", "utf16.xml", "decoded.xml"}) {
        for (const std::size_t blockSize : {1u, 2u, 3u, 4u, 5u, 7u, 64u, 1u << 20}) {
            EXPECT_EQ(treeOfFileInBlocks(folder / name, blockSize), expected) << name << " " << blockSize;
        }
    }
}

TEST(CExpatXMLParserTest, FileTakenInSeveralBlocksMayBeMalformedInAny) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "in.xml", "<a><b/></a>x");
    for (std::size_t blockSize = 1; blockSize <= 13; ++blockSize) {
        EXPECT_EQ(treeOfFileInBlocks(folder / "in.xml", blockSize), kMalformed) << blockSize;
    }
}

/// The tree of a file that is empty when it is opened and holds `size` bytes when it is read.
std::string treeOfFileThatGrows(std::size_t size) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "in.xml", "");
    const ZPKResult<ZPKFileHandle> file = ZPKFileHandle::forReadingAtPath(folder / "in.xml");
    const std::string start = "<a><!--";
    const std::string end = "--></a>";
    std::ofstream(folder / "in.xml") << start << std::string(size - start.size() - end.size(), '.') << end;
    return treeTextOf(CExpatXMLParser::CreateCXMLNodeWithFile(*file, 1 << 20));
}

TEST(CExpatXMLParserTest, FileWhoseSizeIsNotToldIsReadUpToABound) {
    constexpr std::size_t kBound = std::size_t{16} << 20;
    EXPECT_EQ(treeOfFileThatGrows(kBound), "a[]");
    EXPECT_EQ(treeOfFileThatGrows(kBound + 1), kMalformed);
}

TEST(CExpatXMLParserTest, ExternalEntitiesAreNeverRead) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "secret.txt", "secret");
    zpk_test::writeFile(folder / "secret.dtd", "<!ENTITY f 'secret'>");
    const std::string path = folder.path();
    EXPECT_EQ(treeOfText("<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + path + "/secret.txt'>]><a>x&e;y</a>"),
              "a['xy']");
    EXPECT_EQ(treeOfText("<!DOCTYPE a SYSTEM 'file://" + path + "/secret.dtd'><a>x&f;y</a>"), "a['xy']");
    EXPECT_EQ(treeOfText("<!DOCTYPE a [<!ENTITY % p SYSTEM '" + path + "/secret.dtd'> %p;]><a>x&f;y</a>"),
              "a['xy']");
}

TEST(CExpatXMLParserHostileTest, EveryTruncationIsMalformed) {
    const std::string xml =
        "<?xml version='1.0' encoding='UTF-8'?><!DOCTYPE a [<!ENTITY e 'v'>]><a x='1'><b>t&e;\xC3\xA9</b>"
        "<!--c--><![CDATA[d]]></a>";
    for (std::size_t length = 0; length < xml.size(); ++length) {
        EXPECT_EQ(treeOfText(xml.substr(0, length)), kMalformed) << length;
    }
    EXPECT_NE(treeOfText(xml), kMalformed);
}

TEST(CExpatXMLParserHostileTest, ChangedAndRandomBytesNeverCrash) {
    const std::string xml = "<?xml version='1.0'?><!DOCTYPE a [<!ENTITY e 'v'>]><a x='1&e;'><b>t&e;</b></a>";
    std::mt19937 random(20);
    std::uniform_int_distribution<int> byte(0, 255);
    for (std::size_t position = 0; position < xml.size(); ++position) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string changed = xml;
            changed[position] = static_cast<char>(changed[position] ^ (1 << bit));
            CExpatXMLParser::CreateCXMLNodeWithText(changed);
        }
    }
    for (int run = 0; run < 2000; ++run) {
        std::string bytes(static_cast<std::size_t>(byte(random)), ' ');
        for (char& character : bytes) {
            character = static_cast<char>(byte(random));
        }
        EXPECT_EQ(CExpatXMLParser::CreateCXMLNodeWithText("<" + bytes), nullptr);
    }
}

std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    while (count-- != 0) {
        text += piece;
    }
    return text;
}

TEST(CExpatXMLParserHostileTest, NestingIsBounded) {
    const auto nested = [](std::size_t depth) { return repeated("<a>", depth) + repeated("</a>", depth); };
    EXPECT_NE(treeOfText(nested(CExpatTreeBuilder::kMaximumDepth)), kMalformed);
    EXPECT_EQ(treeOfText(nested(CExpatTreeBuilder::kMaximumDepth + 1)), kMalformed);
    EXPECT_EQ(treeOfText(nested(1000000)), kMalformed);
    EXPECT_EQ(treeOfText(repeated("<a>", 1000000)), kMalformed);
}

TEST(CExpatXMLParserHostileTest, WideTreesAreNotDeep) {
    const std::size_t count = 20000;
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText("<a>" + repeated("<b/>", count) + "</a>");
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->GetRootElement()->GetChildCount(), count);
}

TEST(CExpatXMLParserHostileTest, BillionLaughsAreRefused) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 'ha'>";
    for (int level = 1; level < 40; ++level) {
        const std::string inner = "&e" + std::to_string(level - 1) + ";";
        xml += "<!ENTITY e" + std::to_string(level) + " '" + inner + inner + "'>";
    }
    EXPECT_EQ(treeOfText(xml + "]><a>&e39;</a>"), kMalformed);
    EXPECT_EQ(treeOfText(xml + "]><a x='&e39;'/>"), kMalformed);
}

/// A document type of `count` entities, each naming the one before; the last one is `&e<count-1>;`.
std::string chainOfEntities(std::size_t count) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 'x'>";
    for (std::size_t level = 1; level < count; ++level) {
        xml += "<!ENTITY e" + std::to_string(level) + " '&e" + std::to_string(level - 1) + ";'>";
    }
    return xml + "]>";
}

TEST(CExpatXMLParserHostileTest, TakesAsManyEntitiesAsTheBoundAllows) {
    const std::string chain = chainOfEntities(CExpatTreeBuilder::kMaximumEntities);
    const std::string last = "&e" + std::to_string(CExpatTreeBuilder::kMaximumEntities - 1) + ";";
    EXPECT_EQ(treeOfText(chain + "<a>" + last + "</a>"), treeOfText("<a>x</a>"));
    EXPECT_EQ(treeOfText(chain + "<a x='" + last + "'/>"), treeOfText("<a x='x'/>"));
}

TEST(CExpatXMLParserHostileTest, OneEntityOverTheBoundIsMalformed) {
    const std::string chain = chainOfEntities(CExpatTreeBuilder::kMaximumEntities + 1);
    EXPECT_EQ(treeOfText(chain + "<a/>"), kMalformed);
}

TEST(CExpatXMLParserHostileTest, ParameterEntitiesCountToo) {
    std::string xml = "<!DOCTYPE a [";
    for (std::size_t level = 0; level <= CExpatTreeBuilder::kMaximumEntities; ++level) {
        xml += "<!ENTITY % p" + std::to_string(level) + " ''>";
    }
    EXPECT_EQ(treeOfText(xml + "]><a/>"), kMalformed);
}

TEST(CExpatXMLParserHostileTest, LongChainOfEntitiesDoesNotExhaustTheStack) {
    const std::string chain = chainOfEntities(30000);
    EXPECT_EQ(treeOfText(chain + "<a>&e29999;</a>"), kMalformed);
    EXPECT_EQ(treeOfText(chain + "<a x='&e29999;'/>"), kMalformed);
}

TEST(CExpatXMLParserHostileTest, AttributeDefaultsCannotFillTheMemory) {
    const std::string value(100000, 'v');
    const std::string start = "<!DOCTYPE a [<!ATTLIST b x CDATA '" + value + "'>]><a>";
    EXPECT_NE(treeOfText(start + repeated("<b/>", 10) + "</a>"), kMalformed);
    EXPECT_EQ(treeOfText(start + repeated("<b/>", 20000) + "</a>"), kMalformed);
}

TEST(CExpatXMLParserHostileTest, ElementsInEntitiesCannotFillTheMemory) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 '" + repeated("<b/>", 1000) + "'><!ENTITY e1 '" +
                      repeated("&e0;", 1000) + "'>]><a>&e1;</a>";
    EXPECT_EQ(treeOfText(xml), kMalformed);
}

TEST(CExpatXMLParserHostileTest, HugeTokensAreRead) {
    const std::string value(8 << 20, 'v');
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "in.xml", "<a x='" + value + "'>" + value + "<!--" + value + "--></a>");
    const std::unique_ptr<CXMLDocument> document(
        CExpatXMLParser().CreateXMLDocumentWithPath((folder / "in.xml").c_str()));
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->GetRootElement()->GetAttributeForName("x")->GetStringValueString(), value);
    EXPECT_EQ(document->GetRootElement()->GetTextString(), value);
}

std::string elementWithAttributes(std::size_t count) {
    std::string xml = "<a";
    for (std::size_t index = 0; index < count; ++index) {
        xml += " a" + std::to_string(index) + "=''";
    }
    return xml + "/>";
}

TEST(CExpatXMLParserHostileTest, ManyAttributesAreRead) {
    const std::size_t count = 100000;
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText(elementWithAttributes(count));
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->GetRootElement()->GetAttributes().size(), count);
}

TEST(CExpatXMLParserHostileTest, WorkGrowsWithTheInputAndNotWithItsSquare) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "valgrind runs no sanitized program";
#endif
    const zpk_test::TemporaryFolder folder;
    const auto instructionsFor = [&](const std::string& xml) {
        zpk_test::writeFile(folder / "in.xml", xml);
        return zpk_test::instructionsOf({ZPK_XML_TOOL, folder / "in.xml"});
    };
    const auto hugeTokens = [](std::size_t size) {
        const std::string value(size, 'v');
        return "<a x='" + value + "'>" + value + "<!--" + value + "--></a>";
    };
    // What a program needs before it reads anything only helps.
    const std::size_t size = std::size_t{1} << 16;
    EXPECT_LT(instructionsFor(hugeTokens(8 * size)), 10 * instructionsFor(hugeTokens(size)));
    const auto inAnotherEncoding = [](std::size_t characters) {
        std::string xml = "<?xml version='1.0' encoding='GB18030'?><a>";
        for (std::size_t character = 0; character < characters; ++character) {
            xml += "\x81\x30\x81\x30\xD6\xD0 ";
        }
        return xml + "</a>";
    };
    EXPECT_LT(instructionsFor(inAnotherEncoding(8 * size)), 10 * instructionsFor(inAnotherEncoding(size)));
    EXPECT_LT(instructionsFor(elementWithAttributes(16000)),
              10 * instructionsFor(elementWithAttributes(2000)));
}

}  // namespace
