// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CExpatXMLParser.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

#include "Common/CExpatTreeBuilder.h"
#include "Common/CXMLElement.h"
#include "Tests/Common/XMLTreeText.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/VirtualSlot.h"

namespace {

using namespace varno_zpk;
using namespace std::string_literals;
using zpk_test::TreeText;
using zpk_test::VirtualSlot;

const char* const MALFORMED = "malformed";

std::string TreeTextOf(const std::unique_ptr<CXMLDocument>& document) {
    return document != nullptr ? TreeText(*document->GetRootElement()) : MALFORMED;
}

std::string TreeOfText(const std::string& xml) {
    return TreeTextOf(
        std::unique_ptr<CXMLDocument>(CExpatXMLParser().CreateXMLDocumentWithXMLContents(xml.c_str())));
}

/// The tree of a file with these bytes.
std::string TreeOfFile(const std::string& bytes) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::WriteFile(folder / "in.xml", bytes);
    return TreeTextOf(std::unique_ptr<CXMLDocument>(
        CExpatXMLParser().CreateXMLDocumentWithPath((folder / "in.xml").c_str())));
}

class DefaultParserAccess : public CXMLParser {
public:
    static CXMLParser* Current() { return s_DefaultParser; }
    static void Replace(CXMLParser* parser) { s_DefaultParser = parser; }
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
    EXPECT_EQ(VirtualSlot(&CXMLParser::CreateXMLDocumentWithPath), 3u);
    EXPECT_EQ(VirtualSlot(&CXMLParser::CreateXMLDocumentWithXMLContents), 4u);
    EXPECT_EQ(VirtualSlot(&CXMLParser::WriteXMLDocumentToFile), 5u);
    EXPECT_EQ(VirtualSlot(&CXMLParser::WriteXMLDocumentToString), 6u);
    EXPECT_TRUE(std::is_abstract_v<CXMLParser>);
    EXPECT_EQ(sizeof(CExpatXMLParser), sizeof(void*));
}

TEST(CXMLParserTest, DefaultParserIsMadeOnFirstUseAndKept) {
    EXPECT_EQ(DefaultParserAccess::Current(), nullptr);
    CXMLParser* parser = CXMLParser::GetDefaultParser();
    EXPECT_NE(dynamic_cast<CExpatXMLParser*>(parser), nullptr);
    EXPECT_EQ(DefaultParserAccess::Current(), parser);
    EXPECT_EQ(CXMLParser::GetDefaultParser(), parser);
    CXMLParser::Finalize();
}

TEST(CXMLParserTest, FinalizeDeletesTheDefaultParser) {
    int deaths = 0;
    CXMLParser::Finalize();
    DefaultParserAccess::Replace(new WatchedParser(deaths));
    CXMLParser::Finalize();
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(DefaultParserAccess::Current(), nullptr);
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

std::string RowName(const ::testing::TestParamInfo<Row>& row) {
    return row.param.name;
}

class CExpatXMLParserTextTest : public ::testing::TestWithParam<Row> {};

TEST_P(CExpatXMLParserTextTest, TextGivesTheTree) {
    EXPECT_EQ(TreeOfText(GetParam().xml), GetParam().tree);
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
        Row{"CarriageReturnReferenceIsDroppedBetweenElements", "<a>&#xD;<b/>&#xD;</a>", "a[b[]]"},
        Row{"NoBreakSpaceIsText", "<a>\xC2\xA0<b/></a>", "a['\xC2\xA0' b[]]"}),
    RowName);

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
    RowName);

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
    RowName);

INSTANTIATE_TEST_SUITE_P(
    Malformed, CExpatXMLParserTextTest,
    ::testing::Values(
        Row{"Empty", "", MALFORMED}, Row{"OnlyWhiteSpace", " \n", MALFORMED},
        Row{"NoRoot", "<?xml version='1.0'?><!--c-->", MALFORMED}, Row{"TwoRoots", "<a/><b/>", MALFORMED},
        Row{"TextOutsideTheRoot", "<a/>x", MALFORMED}, Row{"Unclosed", "<a><b></b>", MALFORMED},
        Row{"WrongEndTag", "<a></b>", MALFORMED}, Row{"SameAttributeTwice", "<a x='1' x='2'/>", MALFORMED},
        Row{"UnquotedAttribute", "<a x=1/>", MALFORMED}, Row{"UndefinedEntity", "<a>&e;</a>", MALFORMED},
        Row{"BareAmpersand", "<a>&</a>", MALFORMED}, Row{"LessThanInAnAttribute", "<a x='<'/>", MALFORMED},
        Row{"ControlCharacter", "<a>\x01</a>", MALFORMED}, Row{"ReferenceToNUL", "<a>&#0;</a>", MALFORMED},
        Row{"InvalidUTF8", "<a>\xC3\x28</a>", MALFORMED}, Row{"OverlongUTF8", "<a>\xC0\xAF</a>", MALFORMED},
        Row{"SurrogateInUTF8", "<a>\xED\xA0\x80</a>", MALFORMED},
        Row{"DeclarationNotAtTheStart", " <?xml version='1.0'?><a/>", MALFORMED},
        Row{"EntityThatHoldsItself", "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>", MALFORMED}),
    RowName);

class CExpatXMLParserFileTest : public ::testing::TestWithParam<Row> {};

TEST_P(CExpatXMLParserFileTest, BytesGiveTheTree) {
    EXPECT_EQ(TreeOfFile(GetParam().xml), GetParam().tree);
}

INSTANTIATE_TEST_SUITE_P(
    Encodings, CExpatXMLParserFileTest,
    ::testing::Values(
        Row{"UTF8", "<a>\xC3\xA9</a>", "a['\xC3\xA9']"},
        Row{"UTF8WithByteOrderMark", "\xEF\xBB\xBF<a>\xC3\xA9</a>", "a['\xC3\xA9']"},
        Row{"UTF16LittleEndian", "\xFF\xFE<\0a\0>\0\xE9\0<\0/\0a\0>\0"s, "a['\xC3\xA9']"},
        Row{"UTF16BigEndian", "\xFE\xFF\0<\0a\0>\0\xE9\0<\0/\0a\0>"s, "a['\xC3\xA9']"},
        Row{"ISO88591", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "a['\xC3\xA9']"},
        Row{"ISO88592FromTheHostsTables", "<?xml version='1.0' encoding='ISO-8859-2'?><a>\xE8</a>",
            "a['\xC4\x8D']"},
        Row{"Windows1252FromTheHostsTables", "<?xml version='1.0' encoding='windows-1252'?><a>\x80</a>",
            "a['\xE2\x82\xAC']"},
        Row{"ByteThatTheEncodingDoesNotHave", "<?xml version='1.0' encoding='windows-1252'?><a>\x81</a>",
            MALFORMED},
        Row{"EncodingOfSeveralBytes", "<?xml version='1.0' encoding='Shift_JIS'?><a>\x93\xFA</a>", MALFORMED},
        Row{"EncodingThatDoesNotHoldASCII", "<?xml version='1.0' encoding='IBM037'?><a/>", MALFORMED},
        Row{"StatefulEncoding", "<?xml version='1.0' encoding='UTF-7'?><a>+AGE-</a>", MALFORMED},
        Row{"UnknownEncoding", "<?xml version='1.0' encoding='no-such-thing'?><a/>", MALFORMED},
        Row{"EncodingThatContradictsTheBytes", "<?xml version='1.0' encoding='UTF-16'?><a/>", MALFORMED},
        Row{"OddNumberOfBytesInUTF16", "\xFF\xFE<\0a\0/\0>\0\x20"s, MALFORMED},
        Row{"NULByteInText", "<a>x\0y</a>"s, MALFORMED}, Row{"NULByteAfterTheRoot", "<a/>\0"s, MALFORMED},
        Row{"EmptyFile", "", MALFORMED}, Row{"NULBytesOnly", std::string(5000, '\0'), MALFORMED}),
    RowName);

TEST(CExpatXMLParserTest, RootOfAReadDocumentHasNoParent) {
    CExpatXMLParser parser;
    const std::unique_ptr<CXMLDocument> document(parser.CreateXMLDocumentWithXMLContents("<a/>"));
    EXPECT_EQ(document->GetKind(), XMLKIND_DOCUMENT);
    EXPECT_EQ(document->GetRootElement()->GetRootDocument(), nullptr);
}

TEST(CExpatXMLParserTest, WhatIsNoReadableFileGivesNull) {
    const zpk_test::TemporaryFolder folder;
    CExpatXMLParser parser;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    ASSERT_EQ(symlink("nowhere", (folder / "link").c_str()), 0);
    ASSERT_EQ(symlink("loop", (folder / "loop").c_str()), 0);
    for (const std::string& path :
         {folder / "missing.xml", folder.path(), folder / "pipe", folder / "link", folder / "loop",
          std::string(), "/dev/zero"s, "/"s + std::string(5000, 'x')}) {
        EXPECT_EQ(parser.CreateXMLDocumentWithPath(path.c_str()), nullptr) << path;
    }
}

TEST(CExpatXMLParserTest, UnreadableFileGivesNull) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::WriteFile(folder / "in.xml", "<a/>");
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod((folder / "in.xml").c_str(), 0), 0);
    // Root reads every file, so the test goes on as nobody.
    const uid_t user = geteuid();
    ASSERT_TRUE(user != 0 || seteuid(65534) == 0);
    const std::unique_ptr<CXMLDocument> document(
        CExpatXMLParser().CreateXMLDocumentWithPath((folder / "in.xml").c_str()));
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(document, nullptr);
}

TEST(CExpatXMLParserTest, FileIsReadThroughALink) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::WriteFile(folder / "in.xml", "<a/>");
    ASSERT_EQ(symlink("in.xml", (folder / "link").c_str()), 0);
    const std::unique_ptr<CXMLDocument> document(
        CExpatXMLParser().CreateXMLDocumentWithPath((folder / "link").c_str()));
    EXPECT_EQ(TreeTextOf(document), "a[]");
}

TEST(CExpatXMLParserTest, ReadingLeavesNoDescriptorOpen) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::WriteFile(folder / "good.xml", "<a/>");
    zpk_test::WriteFile(folder / "bad.xml", "<a");
    const int before = dup(0);
    close(before);
    for (const char* name : {"good.xml", "bad.xml"}) {
        delete CExpatXMLParser().CreateXMLDocumentWithPath((folder / name).c_str());
    }
    const int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

TEST(CExpatXMLParserTest, EveryBlockSizeGivesTheSameTree) {
    const std::string xml =
        "\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!DOCTYPE a [<!ENTITY e 'in&#33;'>]>\r\n"
        "<a x='1&amp;\r\n2'>\r\n <b>\xE6\x97\xA5&e;&#x42;]]&gt;<![CDATA[ ]] ]]>\r\n</b> <!-- c --> "
        "<d/>t\r</a>\r\n";
    const zpk_test::TemporaryFolder folder;
    zpk_test::WriteFile(folder / "in.xml", xml);
    const std::string expected = TreeOfFile(xml);
    EXPECT_EQ(expected, "a(x='1& 2')[b['\xE6\x97\xA5in!B]]> ]] \n'] d[] 't\n']");
    for (std::size_t blockSize = 1; blockSize <= xml.size() + 1; ++blockSize) {
        const int descriptor = open((folder / "in.xml").c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_GE(descriptor, 0);
        EXPECT_EQ(TreeTextOf(CExpatXMLParser::CreateCXMLNodeWithFile(descriptor, blockSize)), expected)
            << blockSize;
        close(descriptor);
    }
}

TEST(CExpatXMLParserTest, FileTakenInSeveralBlocksMayBeMalformedInAny) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::WriteFile(folder / "in.xml", "<a><b/></a>x");
    for (std::size_t blockSize = 1; blockSize <= 13; ++blockSize) {
        const int descriptor = open((folder / "in.xml").c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(CExpatXMLParser::CreateCXMLNodeWithFile(descriptor, blockSize), nullptr);
        close(descriptor);
    }
}

TEST(CExpatXMLParserTest, ExternalEntitiesAreNeverRead) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::WriteFile(folder / "secret.txt", "secret");
    zpk_test::WriteFile(folder / "secret.dtd", "<!ENTITY f 'secret'>");
    const std::string path = folder.path();
    EXPECT_EQ(TreeOfText("<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + path + "/secret.txt'>]><a>x&e;y</a>"),
              "a['xy']");
    EXPECT_EQ(TreeOfText("<!DOCTYPE a SYSTEM 'file://" + path + "/secret.dtd'><a>x&f;y</a>"), "a['xy']");
    EXPECT_EQ(TreeOfText("<!DOCTYPE a [<!ENTITY % p SYSTEM '" + path + "/secret.dtd'> %p;]><a>x&f;y</a>"),
              "a['xy']");
}

TEST(CExpatXMLParserHostileTest, EveryTruncationIsMalformed) {
    const std::string xml =
        "<?xml version='1.0' encoding='UTF-8'?><!DOCTYPE a [<!ENTITY e 'v'>]><a x='1'><b>t&e;\xC3\xA9</b>"
        "<!--c--><![CDATA[d]]></a>";
    for (std::size_t length = 0; length < xml.size(); ++length) {
        EXPECT_EQ(TreeOfText(xml.substr(0, length)), MALFORMED) << length;
    }
    EXPECT_NE(TreeOfText(xml), MALFORMED);
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

std::string Repeated(const std::string& piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    while (count-- != 0) {
        text += piece;
    }
    return text;
}

TEST(CExpatXMLParserHostileTest, NestingIsBounded) {
    const auto nested = [](std::size_t depth) { return Repeated("<a>", depth) + Repeated("</a>", depth); };
    EXPECT_NE(TreeOfText(nested(CExpatTreeBuilder::MAXIMUM_DEPTH)), MALFORMED);
    EXPECT_EQ(TreeOfText(nested(CExpatTreeBuilder::MAXIMUM_DEPTH + 1)), MALFORMED);
    EXPECT_EQ(TreeOfText(nested(1000000)), MALFORMED);
    EXPECT_EQ(TreeOfText(Repeated("<a>", 1000000)), MALFORMED);
}

TEST(CExpatXMLParserHostileTest, WideTreesAreNotDeep) {
    const std::size_t count = 20000;
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText("<a>" + Repeated("<b/>", count) + "</a>");
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->GetRootElement()->GetChildCount(), count);
}

TEST(CExpatXMLParserHostileTest, BillionLaughsAreRefused) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 'ha'>";
    for (int level = 1; level < 40; ++level) {
        const std::string inner = "&e" + std::to_string(level - 1) + ";";
        xml += "<!ENTITY e" + std::to_string(level) + " '" + inner + inner + "'>";
    }
    EXPECT_EQ(TreeOfText(xml + "]><a>&e39;</a>"), MALFORMED);
    EXPECT_EQ(TreeOfText(xml + "]><a x='&e39;'/>"), MALFORMED);
}

/// A document type of `count` entities, each naming the one before; the last one is `&e<count-1>;`.
std::string ChainOfEntities(std::size_t count) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 'x'>";
    for (std::size_t level = 1; level < count; ++level) {
        xml += "<!ENTITY e" + std::to_string(level) + " '&e" + std::to_string(level - 1) + ";'>";
    }
    return xml + "]>";
}

TEST(CExpatXMLParserHostileTest, TakesAsManyEntitiesAsTheBoundAllows) {
    const std::string chain = ChainOfEntities(CExpatTreeBuilder::MAXIMUM_ENTITIES);
    const std::string last = "&e" + std::to_string(CExpatTreeBuilder::MAXIMUM_ENTITIES - 1) + ";";
    EXPECT_EQ(TreeOfText(chain + "<a>" + last + "</a>"), TreeOfText("<a>x</a>"));
    EXPECT_EQ(TreeOfText(chain + "<a x='" + last + "'/>"), TreeOfText("<a x='x'/>"));
}

TEST(CExpatXMLParserHostileTest, OneEntityOverTheBoundIsMalformed) {
    const std::string chain = ChainOfEntities(CExpatTreeBuilder::MAXIMUM_ENTITIES + 1);
    EXPECT_EQ(TreeOfText(chain + "<a/>"), MALFORMED);
}

TEST(CExpatXMLParserHostileTest, ParameterEntitiesCountToo) {
    std::string xml = "<!DOCTYPE a [";
    for (std::size_t level = 0; level <= CExpatTreeBuilder::MAXIMUM_ENTITIES; ++level) {
        xml += "<!ENTITY % p" + std::to_string(level) + " ''>";
    }
    EXPECT_EQ(TreeOfText(xml + "]><a/>"), MALFORMED);
}

TEST(CExpatXMLParserHostileTest, LongChainOfEntitiesDoesNotExhaustTheStack) {
    const std::string chain = ChainOfEntities(30000);
    EXPECT_EQ(TreeOfText(chain + "<a>&e29999;</a>"), MALFORMED);
    EXPECT_EQ(TreeOfText(chain + "<a x='&e29999;'/>"), MALFORMED);
}

TEST(CExpatXMLParserHostileTest, AttributeDefaultsCannotFillTheMemory) {
    const std::string value(100000, 'v');
    const std::string start = "<!DOCTYPE a [<!ATTLIST b x CDATA '" + value + "'>]><a>";
    EXPECT_NE(TreeOfText(start + Repeated("<b/>", 10) + "</a>"), MALFORMED);
    EXPECT_EQ(TreeOfText(start + Repeated("<b/>", 20000) + "</a>"), MALFORMED);
}

TEST(CExpatXMLParserHostileTest, ElementsInEntitiesCannotFillTheMemory) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 '" + Repeated("<b/>", 1000) + "'><!ENTITY e1 '" +
                      Repeated("&e0;", 1000) + "'>]><a>&e1;</a>";
    EXPECT_EQ(TreeOfText(xml), MALFORMED);
}

TEST(CExpatXMLParserHostileTest, HugeTokensAreReadInLinearTime) {
    const std::string value(8 << 20, 'v');
    const zpk_test::TemporaryFolder folder;
    zpk_test::WriteFile(folder / "in.xml", "<a x='" + value + "'>" + value + "<!--" + value + "--></a>");
    const auto start = std::chrono::steady_clock::now();
    const std::unique_ptr<CXMLDocument> document(
        CExpatXMLParser().CreateXMLDocumentWithPath((folder / "in.xml").c_str()));
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->GetRootElement()->GetAttributeForName("x")->GetStringValueString(), value);
    EXPECT_EQ(document->GetRootElement()->GetTextString(), value);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(CExpatXMLParserHostileTest, ManyAttributesAreReadInLinearTime) {
    const int count = 100000;
    std::string xml = "<a";
    for (int index = 0; index < count; ++index) {
        xml += " a" + std::to_string(index) + "=''";
    }
    const auto start = std::chrono::steady_clock::now();
    const auto document = CExpatXMLParser::CreateCXMLNodeWithText(xml + "/>");
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->GetRootElement()->GetAttributes().size(), static_cast<std::size_t>(count));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
