// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CPlusUtil.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "Common/CBaseObject.h"
#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"

using varno_zpk::CBaseObject;
using varno_zpk::fopen_s;
using varno_zpk::g_CPlusUtil_File;
using varno_zpk::g_CPlusUtil_Line;

namespace zpk_test {

// Named, since the run-time names of their pointers are part of the expected lines.
class Plum : public CBaseObject {
public:
    int weight = 5;
};

class Pear : public CBaseObject {
public:
    int weight = 7;
};

class Crate {
public:
    virtual ~Crate() = default;
};

class CrateOfPlums : public Crate, public CBaseObject {
public:
    ~CrateOfPlums() noexcept override = default;
};

}  // namespace zpk_test

using zpk_test::captureStreams;
using zpk_test::CrateOfPlums;
using zpk_test::Pear;
using zpk_test::Plum;

static_assert(std::is_same_v<decltype(g_CPlusUtil_File), const char*>);
static_assert(std::is_same_v<decltype(g_CPlusUtil_Line), std::uint32_t>);

TEST(DownCastTest, RightClassIsGivenInSilence) {
    Plum plum;
    CBaseObject* object = &plum;
    Plum* cast = nullptr;
    const auto captured = captureStreams([&] { cast = DOWN_CAST(Plum*, object); });
    EXPECT_EQ(cast, &plum);
    EXPECT_EQ(captured.standardError, "");
    EXPECT_EQ(captured.standardOutput, "");
}

TEST(DownCastTest, PointerThatMovesInsideTheObjectIsNoError) {
    CrateOfPlums crate;
    CBaseObject* object = &crate;
    ASSERT_NE(static_cast<void*>(object), static_cast<void*>(&crate));
    CrateOfPlums* cast = nullptr;
    const auto captured = captureStreams([&] { cast = DOWN_CAST(CrateOfPlums*, object); });
    EXPECT_EQ(cast, &crate);
    EXPECT_EQ(captured.standardError, "");
}

TEST(DownCastTest, NullStaysNullInSilence) {
    CBaseObject* object = nullptr;
    Plum* cast = reinterpret_cast<Plum*>(alignof(Plum));
    const auto captured = captureStreams([&] { cast = DOWN_CAST(Plum*, object); });
    EXPECT_EQ(cast, nullptr);
    EXPECT_EQ(captured.standardError, "");
}

TEST(DownCastTest, WrongClassIsReportedAndCastAllTheSame) {
    Pear pear;
    CBaseObject* object = &pear;
    Plum* cast = nullptr;
    const auto captured = captureStreams([&] {
#line 100
        cast = DOWN_CAST(Plum*, object);
    });
    EXPECT_EQ(static_cast<void*>(cast), static_cast<void*>(&pear));
    EXPECT_EQ(captured.standardError,
              "Tests/Common/CPlusUtilTest.cpp:100: "
              "down_cast error.'PN9varno_zpk11CBaseObjectE'->'PN8zpk_test4PlumE'\n");
    EXPECT_EQ(captured.standardOutput, "");
}

TEST(DownCastTest, ReportNamesConstantPointerTypes) {
    const Pear pear;
    const CBaseObject* object = &pear;
    const auto captured = captureStreams([&] {
#line 200
        static_cast<void>(DOWN_CAST(const Plum*, object));
    });
    EXPECT_EQ(captured.standardError,
              "Tests/Common/CPlusUtilTest.cpp:200: "
              "down_cast error.'PKN9varno_zpk11CBaseObjectE'->'PKN8zpk_test4PlumE'\n");
}

TEST(DownCastTest, EveryCastLeavesItsPlaceInTheGlobals) {
    Plum plum;
    CBaseObject* object = &plum;
#line 300
    static_cast<void>(DOWN_CAST(Plum*, object));
    EXPECT_STREQ(g_CPlusUtil_File, "Tests/Common/CPlusUtilTest.cpp");
    EXPECT_EQ(g_CPlusUtil_Line, 300u);

    object = nullptr;
#line 310
    static_cast<void>(DOWN_CAST(Plum*, object));
    EXPECT_STREQ(g_CPlusUtil_File, "Tests/Common/CPlusUtilTest.cpp");
    EXPECT_EQ(g_CPlusUtil_Line, 310u);
}

TEST(FopenSTest, OpensAFileThatIsThere) {
    const zpk_test::TemporaryFolder folder;
    zpk_test::writeFile(folder / "file", "text");
    std::FILE* file = nullptr;
    ASSERT_EQ(fopen_s(&file, (folder / "file").c_str(), "r"), 0);
    ASSERT_NE(file, nullptr);
    char bytes[8] = {};
    EXPECT_EQ(std::fread(bytes, 1, sizeof(bytes), file), 4u);
    EXPECT_STREQ(bytes, "text");
    EXPECT_LT(std::fputc('x', file), 0) << "opened for reading, yet it can be written";
    std::fclose(file);
}

TEST(FopenSTest, FailureGivesTheSystemsNumberAndNoFile) {
    const zpk_test::TemporaryFolder folder;
    const struct {
        std::string path;
        const char* mode;
        int error;
    } rows[] = {
        {folder / "missing", "r", ENOENT},
        {"", "r", ENOENT},
        {folder.path(), "w", EISDIR},
        {folder / "missing", "no such mode", EINVAL},
    };
    for (const auto& row : rows) {
        std::FILE* file = stderr;
        EXPECT_EQ(fopen_s(&file, row.path.c_str(), row.mode), row.error) << row.path << " " << row.mode;
        EXPECT_EQ(file, nullptr) << row.path << " " << row.mode;
    }
}
