// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CResourceBundleStringTableParser.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "Common/CBaseObjectUtil.h"
#include "Common/CPlusUtil.h"
#include "Common/CResourceBundleStringElement.h"
#include "Tests/Common/ParsedTable.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/InstructionCount.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using varno_zpk::CBaseObject;
using varno_zpk::CBaseObjectUtil;
using varno_zpk::CResourceBundleStringElement;
using varno_zpk::CResourceBundleStringTableParser;
using zpk_test::Entries;
using zpk_test::faultLine;
using zpk_test::parseContents;
using zpk_test::ParsedTable;
using zpk_test::parseFile;
using zpk_test::TemporaryFolder;
using zpk_test::writeFile;
using namespace std::string_literals;

struct Fault {
    int line;
    int byte;
    std::string message;
};

Fault syntax(int line, int byte) {
    return {line, byte, "Syntax error."};
}

Fault escape(int line, int byte) {
    return {line, byte, "Not supported escape sequence charactor."};
}

/// What a listener is told.
struct Told : varno_zpk::IStringTableListener {
    Entries entries;
    std::vector<std::size_t> keyOffsets;
    std::vector<std::pair<std::size_t, std::size_t>> valueOffsets;
    std::vector<std::string> faults;
    std::vector<std::size_t> faultOffsets;

    void OnEntry(const std::string& key, const std::string& value, const EntryPlace& place) override {
        entries.emplace_back(key.c_str(), value.c_str());
        keyOffsets.push_back(place.key);
        valueOffsets.emplace_back(place.value, place.end);
    }
    void OnFault(const char* message, std::size_t offset) override {
        faults.emplace_back(message);
        faultOffsets.push_back(offset);
    }
};

struct Row {
    const char* name;
    std::string contents;
    Entries entries;
    std::vector<Fault> faults;
};

const std::string kBom = "\xEF\xBB\xBF";

const Row kRows[] = {
    // Texts.
    {"KeyAndValue", "key = value;", {{"key", "value"}}, {}},
    {"EntriesKeepFileOrder", "b=1;a=2;\nc=3;", {{"b", "1"}, {"a", "2"}, {"c", "3"}}, {}},
    {"DuplicateKeysAreAllKept", "a=1;a=2;a=1;", {{"a", "1"}, {"a", "2"}, {"a", "1"}}, {}},
    {"BlanksOutsideQuotesAreDroppedBetweenWords", "k e\ty = Hello World;", {{"key", "HelloWorld"}}, {}},
    {"LineEndsOutsideQuotesAreDropped", "k\ne\ry\r\n=\nv\na\rl\r\nue\n;", {{"key", "value"}}, {}},
    {"QuotedPiecesJoin", "key = \"Hello \" \"World\";", {{"key", "Hello World"}}, {}},
    {"QuotedAndUnquotedPiecesJoin", "\"a b\" c = d\" e\"f;", {{"a bc", "d ef"}}, {}},
    {"OtherBytesStand",
     "k=\x01\x08\x0B\x0C\x0E\x1F\x7F\x80\xFF!#$%&'()*+,-.0:<>?@AZ[]^_`az{|}~;",
     {{"k", "\x01\x08\x0B\x0C\x0E\x1F\x7F\x80\xFF!#$%&'()*+,-.0:<>?@AZ[]^_`az{|}~"}},
     {}},
    {"Utf8TextStands", "ключ = \"終了 €\";", {{"ключ", "終了 €"}}, {}},
    {"BytesThatAreNoUtf8Stand", "k\xC3=\"\xC3(\xFE\";", {{"k\xC3", "\xC3(\xFE"}}, {}},
    {"KeyOfAZeroByteIsAnEntryWithAnEmptyText", "\0=1;a=2;"s, {{"", "1"}, {"a", "2"}}, {}},
    {"TextsEndAtAZeroByte", "a\0b=c\0d;e=f;"s, {{"a", "c"}, {"e", "f"}}, {}},
    {"DelimitersAndCommentsInQuotesAreText",
     "\"a=b\" = \"c;d=e/f//g/*h*/\";",
     {{"a=b", "c;d=e/f//g/*h*/"}},
     {}},
    {"TabInQuotesIsDropped", "key = \"a\tb\";", {{"key", "ab"}}, {}},
    {"LineEndsInQuotesAreDroppedAndCounted", "key = \"a\nb\rc\r\nd\";e;", {{"key", "abcd"}}, {syntax(4, 5)}},
    {"QuotedValueOverTwoLines", "key = \"one\ntwo\";\nx;", {{"key", "onetwo"}}, {syntax(3, 2)}},

    // Escapes.
    {"EscapesInQuotes", R"(key = "\"\\\n\t";)", {{"key", "\"\\\n\t"}}, {}},
    {"EscapesOutsideQuotes", R"(k\"\\\n\t = \"\\\n\tx;)", {{"k\"\\\n\t", "\"\\\n\tx"}}, {}},
    {"EscapedTabIsARealTab", R"(key = "a\tb";)", {{"key", "a\tb"}}, {}},
    {"UnknownEscapeInQuotes", R"(key = "x\qy";)", {{"key", "xqy"}}, {escape(1, 10)}},
    {"UnknownEscapeOutsideQuotes", R"(key = \x;)", {{"key", "x"}}, {escape(1, 8)}},
    {"UnknownEscapeIsReadAgainAsABlank",
     "k=a\\ b;l=\"a\\ b\";",
     {{"k", "ab"}, {"l", "a b"}},
     {escape(1, 5), escape(1, 13)}},
    {"UnknownEscapeIsReadAgainAsATab", "k=\"a\\\tb\";", {{"k", "ab"}}, {escape(1, 6)}},
    {"UnknownEscapeIsReadAgainAsALineEnd",
     "k=a\\\r\nb;l=\"\\\nc\";x;",
     {{"k", "ab"}, {"l", "c"}},
     {escape(1, 5), escape(2, 7), syntax(3, 5)}},
    {"UnknownEscapeIsReadAgainAsADelimiter",
     R"(k=a\;b\==c;)",
     {{"k", "a"}},
     {escape(1, 5), escape(1, 8), syntax(1, 9), syntax(1, 11)}},
    {"UnknownEscapeIsReadAgainAsASlash", R"(k=a\/b;)", {{"k", "ab"}}, {escape(1, 5), syntax(1, 6)}},
    {"UnknownEscapeIsReadAgainAsAComment", "k=a\\//b;\nc;", {{"k", "ac"}}, {escape(1, 5)}},
    {"CapitalLettersAreNoEscapes", R"(k="\N\T";)", {{"k", "NT"}}, {escape(1, 5), escape(1, 7)}},
    {"BackslashAtEndOfFile", R"(key = a\)", {}, {escape(1, 8), syntax(1, 8)}},
    {"BackslashAtEndOfFileInQuotes", R"(k="\)", {}, {escape(1, 4), syntax(1, 4)}},

    // Comments.
    {"CommentsBetweenPieces", "key /* note */ = value; // end", {{"key", "value"}}, {}},
    {"CommentsInsideUnquotedText", "k/*=*/ey=va//;\nlue/**/;", {{"key", "value"}}, {}},
    {"LineCommentEndsAtEveryLineEnd",
     "//a=1;\nb=2;//c=3;\rd=4;//e=5;\r\nf=6;",
     {{"b", "2"}, {"d", "4"}, {"f", "6"}},
     {}},
    {"BlockCommentOverLines", "/* a=1;\n b=2;\r\n c=3;\r*/d=4;e;", {{"d", "4"}}, {syntax(4, 8)}},
    {"AsteriskOfTheOpenerDoesNotClose", "/*/ a=1; */ b=2;", {{"b", "2"}}, {}},
    {"ShortestBlockComment", "/**/a=1;", {{"a", "1"}}, {}},
    {"SeveralAsterisksClose", "/***/a=1;/* **/b=2;/****/c=3;", {{"a", "1"}, {"b", "2"}, {"c", "3"}}, {}},
    {"AsteriskAndSlashApartDoNotClose", "/* * / *x/ *\n/ *\r\n/ a=1; */b=2;", {{"b", "2"}}, {}},
    {"BlockCommentsDoNotNest", "/* /* */a=1;", {{"a", "1"}}, {}},
    {"QuoteInACommentIsNothing", "/*\"*/a=1;//\"\nb=2;", {{"a", "1"}, {"b", "2"}}, {}},
    {"UnclosedBlockCommentEndsSilently", "a=1; /* b=2;", {{"a", "1"}}, {}},
    {"UnclosedOpenerEndsSilently", "a=1; /*", {{"a", "1"}}, {}},
    {"LineCommentAtEndOfFile", "a=1; //", {{"a", "1"}}, {}},
    {"LoneSlashInText", "key = a/b;", {{"key", "ab"}}, {syntax(1, 9)}},
    {"LoneSlashBeforeText", "/key = value;", {{"key", "value"}}, {syntax(1, 2)}},
    {"LoneSlashBeforeADelimiter", "key = a/;", {{"key", "a"}}, {syntax(1, 9)}},
    {"LoneSlashBeforeAQuote", "k=/\"a b\";", {{"k", "a b"}}, {syntax(1, 4)}},
    {"LoneSlashBeforeALineEnd", "k=a/\r\nb;c;", {{"k", "ab"}}, {syntax(1, 5), syntax(2, 4)}},
    {"LoneSlashBeforeABackslash", R"(k=a/\nb;)", {{"k", "a\nb"}}, {syntax(1, 5)}},
    {"LoneSlashAtEndOfFile", "a=1;/", {{"a", "1"}}, {syntax(1, 5)}},

    // Faulty entries.
    {"EmptyKeyIsDroppedSilently", "= value;\"\" = value;/**/=value;a=b;", {{"a", "b"}}, {}},
    {"EmptyValueIsAnEntry", "key = ;kez = \"\";", {{"key", ""}, {"kez", ""}}, {}},
    {"KeyWithoutValue", "key;a=1;", {{"a", "1"}}, {syntax(1, 4)}},
    {"ValueEndedByAnEqualsSign", "a = b = c;d=1;", {{"d", "1"}}, {syntax(1, 7), syntax(1, 10)}},
    {"LoneSemicolon", "a=1;;b=2;", {{"a", "1"}, {"b", "2"}}, {syntax(1, 5)}},
    {"OnlyDelimiters", "==;;", {}, {syntax(1, 2), syntax(1, 3), syntax(1, 4)}},
    {"ValueCutOffByTheEndOfFile", "a=1;\nkey = value", {{"a", "1"}}, {syntax(2, 11)}},
    {"ValueCutOffAfterALineEnd", "key = value\n", {}, {syntax(2, 0)}},
    {"QuotedValueCutOffByTheEndOfFile", "key = \"value;", {}, {syntax(1, 13)}},
    {"EmptyValueCutOffByTheEndOfFile", "key =", {}, {syntax(1, 5)}},
    {"KeyCutOffByTheEndOfFileIsSilent", "a=1;\nkey", {{"a", "1"}}, {}},
    {"QuotedKeyCutOffByTheEndOfFileIsSilent", "\"key;", {}, {}},

    // Line numbers.
    {"LineFeedsCount", "\n\n a;", {}, {syntax(3, 3)}},
    {"LoneCarriageReturnsCount", "\r\r a;", {}, {syntax(3, 3)}},
    {"PairsCountOnce", "\r\n\r\n a;", {}, {syntax(3, 3)}},
    {"LineFeedBeforeCarriageReturnCountsTwice", "\n\r a;", {}, {syntax(3, 3)}},
    {"CarriageReturnBeforeAPairCountsTwice", "\r\r\n a;", {}, {syntax(3, 3)}},
    {"CarriageReturnAtEndOfFileCounts", "a=b\r", {}, {syntax(2, 0)}},
    {"ColumnsCountBytes", "é\t; ;", {}, {syntax(1, 4), syntax(1, 6)}},

    // Start of the file.
    {"ByteOrderMarkIsSkipped", kBom + "a=1;", {{"a", "1"}}, {}},
    {"ByteOrderMarkOnly", kBom, {}, {}},
    {"ByteOrderMarkCountsInTheColumn", kBom + "key;\nkey;", {}, {syntax(1, 7), syntax(2, 4)}},
    {"SecondByteOrderMarkIsText", kBom + kBom + "a=1;", {{kBom + "a", "1"}}, {}},
    {"LaterByteOrderMarkIsText", "a=" + kBom + ";", {{"a", kBom}}, {}},
    {"HalfAByteOrderMarkIsText", "\xEF\xBB=1;", {{"\xEF\xBB", "1"}}, {}},
    {"FirstByteOfAMarkIsText", "\xEF=1;", {{"\xEF", "1"}}, {}},
    {"OtherEncodingsAreNotRecognised",
     "\xFF\xFE"
     "a=1;",
     {{"\xFF\xFE"
       "a",
       "1"}},
     {}},
    {"ThreeBytesAreAnEntry", "a=;", {{"a", ""}}, {}},
    {"ThreeBytesOfFaults", ";;;", {}, {syntax(1, 1), syntax(1, 2), syntax(1, 3)}},
    {"WellFormedFile",
     kBom + "// English\n\"ZPKString_OK\" = \"OK\";\nZPKString_DISCCHECK_CANCEL = \"Cancel\";\n",
     {{"ZPKString_OK", "OK"}, {"ZPKString_DISCCHECK_CANCEL", "Cancel"}},
     {}},
};

class StringTableFormatTest : public testing::TestWithParam<Row> {};

TEST_P(StringTableFormatTest, GivesEntriesAndFaults) {
    const TemporaryFolder folder;
    const std::string path = folder / "ZPKStringTable.def";
    const Row& row = GetParam();

    ParsedTable expected;
    expected.entries = row.entries;
    for (const Fault& fault : row.faults) {
        expected.standardOutput += faultLine(path, fault.line, fault.byte, fault.message);
    }
    EXPECT_EQ(parseContents(path, row.contents), expected);
}

TEST_P(StringTableFormatTest, TellsAListenerTheSame) {
    const TemporaryFolder folder;
    const std::string path = folder / "ZPKStringTable.def";
    const Row& row = GetParam();
    writeFile(path, row.contents);
    Told told;
    const auto captured = zpk_test::captureStreams(
        [&] { EXPECT_EQ(CResourceBundleStringTableParser().Parse(path.c_str(), told), 0); });
    EXPECT_EQ(captured.standardOutput, "");
    EXPECT_EQ(told.entries, row.entries);
    std::vector<std::string> messages;
    for (const Fault& fault : row.faults) {
        messages.push_back(fault.message);
    }
    EXPECT_EQ(told.faults, messages);
}

INSTANTIATE_TEST_SUITE_P(Rows, StringTableFormatTest, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.name;
}

TEST(StringTableParserTest, ListenerIsToldWhere) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    // The second key stands beyond the first block.
    const std::string filler = "/*" + std::string(20000, '*') + "*/";
    writeFile(path, kBom + " a=1;" + filler + "\n  \"b\"=\\x;c;");
    Told told;
    EXPECT_EQ(CResourceBundleStringTableParser().Parse(path.c_str(), told), 0);
    const std::size_t second = kBom.size() + 5 + filler.size() + 3;
    EXPECT_EQ(told.keyOffsets, (std::vector<std::size_t>{kBom.size() + 1, second}));
    EXPECT_EQ(told.faultOffsets, (std::vector<std::size_t>{second + 5, second + 8}));
    const std::size_t first = kBom.size() + 3;
    EXPECT_EQ(told.valueOffsets, (std::vector<std::pair<std::size_t, std::size_t>>{
                                     {first, first + 1}, {second + 4, second + 6}}));
}

TEST(StringTableParserTest, ListenerIsToldNothingOfWhatIsNoTable) {
    const TemporaryFolder folder;
    Told told;
    EXPECT_EQ(CResourceBundleStringTableParser().Parse((folder / "missing").c_str(), told), ENOENT);
    EXPECT_EQ(CResourceBundleStringTableParser().Parse(folder.path().c_str(), told), EISDIR);
    EXPECT_TRUE(told.entries.empty());
}

TEST(StringTableParserTest, FilesBelowThreeBytesAreEmptyAndSilent) {
    const TemporaryFolder folder;
    for (const std::string contents : {"", "a", ";", "=", "/", "\\", "\"", "\n", "a;", ";;", "=;", "//", "/a",
                                       "\\q", "\r\n", "\xEF", "\xEF\xBB"}) {
        EXPECT_EQ(parseContents(folder / "table", contents), ParsedTable()) << contents;
    }
}

TEST(StringTableParserTest, MessagesNameThePathAsPassed) {
    const TemporaryFolder folder;
    writeFile(folder / "sub/table", "a;;");
    const std::string path = folder / "sub/../sub//table";
    EXPECT_EQ(parseFile(path).standardOutput,
              faultLine(path, 1, 2, "Syntax error.") + faultLine(path, 1, 3, "Syntax error."));
}

TEST(StringTableParserTest, MessageToTheByte) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    EXPECT_EQ(parseContents(path, "a;\\q;").standardOutput,
              "[path=" + path + ":line=1:byte=2]Syntax error.\n" + "[path=" + path +
                  ":line=1:byte=4]Not supported escape sequence charactor.\n" + "[path=" + path +
                  ":line=1:byte=5]Syntax error.\n");
}

TEST(StringTableParserTest, AppendsToTheList) {
    const TemporaryFolder folder;
    writeFile(folder / "one", "a=1;");
    writeFile(folder / "two", "b=2;");
    std::vector<CBaseObject*> elements;
    CResourceBundleStringTableParser parser;
    EXPECT_EQ(parser.Parse((folder / "one").c_str(), elements), 0);
    EXPECT_EQ(parser.Parse((folder / "two").c_str(), elements), 0);
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_EQ(DOWN_CAST(CResourceBundleStringElement*, elements[0])->GetKey(), "a");
    EXPECT_EQ(DOWN_CAST(CResourceBundleStringElement*, elements[1])->GetKey(), "b");
    CBaseObjectUtil::Destroy(elements);
}

TEST(StringTableParserTest, OpenFileIsReadFromWhereItStands) {
    const TemporaryFolder folder;
    writeFile(folder / "table", "skip;a=1;");
    std::FILE* file = nullptr;
    ASSERT_EQ(varno_zpk::fopen_s(&file, (folder / "table").c_str(), "r"), 0);
    ASSERT_EQ(std::fseek(file, 5, SEEK_SET), 0);
    std::vector<CBaseObject*> elements;
    CResourceBundleStringTableParser().ParseInternal(file, "table", elements);
    EXPECT_EQ(std::fclose(file), 0) << "the caller's to close";
    ASSERT_EQ(elements.size(), 1u);
    EXPECT_EQ(DOWN_CAST(CResourceBundleStringElement*, elements[0])->GetValue(), "1");
    CBaseObjectUtil::Destroy(elements);
}

ParsedTable failed(int error) {
    ParsedTable table;
    table.result = error;
    return table;
}

TEST(StringTableParserTest, FileThatCannotBeOpenedGivesTheSystemsErrorNumber) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "a=1;");
    EXPECT_EQ(parseFile(folder / "missing"), failed(ENOENT));
    EXPECT_EQ(parseFile(folder / "file/below"), failed(ENOTDIR));
    EXPECT_EQ(parseFile(""), failed(ENOENT));
    EXPECT_EQ(parseFile(folder / std::string(300, 'x')), failed(ENAMETOOLONG));
}

TEST(StringTableParserTest, UnreadableFileGivesTheSystemsErrorNumber) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    writeFile(path, "a=1;");
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    const auto parse = [&path] {
        // Root reads everything, so it becomes nobody first.
        if (::geteuid() == 0 && ::setuid(65534) != 0) {
            ::_exit(2);
        }
        std::vector<CBaseObject*> elements;
        const int result = CResourceBundleStringTableParser().Parse(path.c_str(), elements);
        ::_exit(result == EACCES && elements.empty() ? 0 : 1);
    };
    EXPECT_EXIT(parse(), testing::ExitedWithCode(0), "");
}

/// Ends the program when the code under test waits or never comes to an end.
class Alarm {
public:
    Alarm() { ::alarm(60); }
    ~Alarm() { ::alarm(0); }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
};

TEST(StringTableParserTest, WhatIsNoRegularFileIsNoTable) {
    const Alarm alarm;
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("fifo", (folder / "link to a fifo").c_str()), 0);
    ASSERT_EQ(::symlink("/dev/zero", (folder / "link to a device").c_str()), 0);
    ASSERT_EQ(::symlink(".", (folder / "link to a folder").c_str()), 0);
    ASSERT_EQ(::symlink("loop", (folder / "loop").c_str()), 0);
    EXPECT_EQ(parseFile(folder / "fifo"), failed(EINVAL));
    EXPECT_EQ(parseFile(folder / "link to a fifo"), failed(EINVAL));
    EXPECT_EQ(parseFile(folder / "link to a device"), failed(EINVAL));
    EXPECT_EQ(parseFile("/dev/zero"), failed(EINVAL));
    EXPECT_EQ(parseFile(folder.path()), failed(EISDIR));
    EXPECT_EQ(parseFile(folder / "link to a folder"), failed(EISDIR));
    EXPECT_EQ(parseFile(folder / "loop"), failed(ELOOP));
}

TEST(StringTableParserTest, FileIsReadThroughALink) {
    const TemporaryFolder folder;
    writeFile(folder / "table", "a=1;");
    ASSERT_EQ(::symlink("table", (folder / "link").c_str()), 0);
    EXPECT_EQ(parseFile(folder / "link").entries, (Entries{{"a", "1"}}));
}

/// A table of `size` bytes whose first and last entry are `first=1;` and `last=2;`.
std::string tableOfSize(std::size_t size) {
    const std::string first = "first=1;//";
    const std::string last = "\nlast=2;";
    return first + std::string(size - first.size() - last.size(), '.') + last;
}

TEST(StringTableParserTest, TableOfTheLargestSizeIsReadWhole) {
    const TemporaryFolder folder;
    const ParsedTable table =
        parseContents(folder / "table", tableOfSize(CResourceBundleStringTableParser::kLargestTable));
    EXPECT_EQ(table.result, 0);
    EXPECT_EQ(table.entries, (Entries{{"first", "1"}, {"last", "2"}}));
}

TEST(StringTableParserTest, TableOneByteLargerIsDamagedAndKeepsTheEntriesBefore) {
    const TemporaryFolder folder;
    const ParsedTable table =
        parseContents(folder / "table", tableOfSize(CResourceBundleStringTableParser::kLargestTable + 1));
    EXPECT_EQ(table.result, -1);
    EXPECT_EQ(table.entries, (Entries{{"first", "1"}}));
}

TEST(StringTableParserTest, WorkGrowsWithTheTableAndNotWithItsSquare) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "valgrind runs no sanitized program";
#endif
    const TemporaryFolder folder;
    const auto instructionsFor = [&folder](const std::string& table) {
        writeFile(folder / "table", table);
        return zpk_test::instructionsOf({ZPK_STRING_TABLE_TOOL, folder / "table"});
    };
    const auto withEntries = [](unsigned count) {
        std::string table;
        for (unsigned entry = 0; entry < count; ++entry) {
            table += "\"key" + std::to_string(entry) + "\" = \"value\";\n";
        }
        return table;
    };
    EXPECT_LT(instructionsFor(withEntries(8000)), 10 * instructionsFor(withEntries(1000)));
    // Of many pieces each: what is one piece is read as one.
    const auto withOneText = [](std::size_t pieces) {
        const auto text = [pieces](std::string_view piece) {
            std::string all;
            for (std::size_t count = 0; count < pieces; ++count) {
                all += piece;
            }
            return all;
        };
        return "\"" + text("k\\n") + "\" = \"" + text("v\\t") + "\"; /*" + text("c*") + "*/\n";
    };
    EXPECT_LT(instructionsFor(withOneText(40000)), 10 * instructionsFor(withOneText(5000)));
}

/// What is in the file that is the standard output of a program that parses `path` and is killed as
/// soon as the parser returns.
std::string outputOfAKilledProgram(const std::string& path, const std::string& output) {
    std::fflush(stdout);
    const pid_t program = ::fork();
    if (program == 0) {
        std::vector<CBaseObject*> elements;
        if (std::freopen(output.c_str(), "w", stdout) != nullptr) {
            CResourceBundleStringTableParser().Parse(path.c_str(), elements);
            ::raise(SIGKILL);
        }
        ::_exit(1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(program, &status, 0), program);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    return zpk_test::readFile(output);
}

TEST(StringTableParserTest, MessagesAreInTheFileWhenTheProgramIsKilledAfterwards) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    writeFile(path, "a;b=1;");
    EXPECT_EQ(outputOfAKilledProgram(path, folder / "output"), faultLine(path, 1, 2, "Syntax error."));
}

TEST(StringTableParserTest, MessagesOfADamagedTableAreInTheFileToo) {
    const TemporaryFolder folder;
    const std::string path = folder / "table";
    writeFile(path, "a;" + tableOfSize(CResourceBundleStringTableParser::kLargestTable));
    EXPECT_EQ(outputOfAKilledProgram(path, folder / "output"), faultLine(path, 1, 2, "Syntax error."));
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST(StringTableParserTest, ClosesTheFile) {
    const TemporaryFolder folder;
    writeFile(folder / "table", "a=1;b");
    const std::ptrdiff_t before = openDescriptors();
    parseFile(folder / "table");
    EXPECT_EQ(openDescriptors(), before);
}

TEST(StringTableParserTest, TextsLongerThanABlock) {
    const TemporaryFolder folder;
    const std::string key(10239, 'k');
    const std::string value(50001, 'v');
    EXPECT_EQ(parseContents(folder / "table", key + "=\"" + value + "\";").entries, (Entries{{key, value}}));
    EXPECT_EQ(parseContents(folder / "table", key + "=" + value + ";").entries, (Entries{{key, value}}));
}

TEST(StringTableParserTest, ElementCopiesItsTexts) {
    std::string key = "key";
    std::string value = "value";
    const CResourceBundleStringElement element(key.c_str(), value.c_str());
    key = "KEY";
    value = "VALUE";
    EXPECT_EQ(element.GetKey(), "key");
    EXPECT_EQ(element.GetValue(), "value");
}

}  // namespace
