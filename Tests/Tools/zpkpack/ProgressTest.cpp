// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Progress.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "Package/ZPKPackageLayout.h"
#include "Tests/Tools/zpkpack/PackagerFixture.h"
#include "Tools/zpkpack/ArchivePacker.h"
#include "Tools/zpkpack/MadeBundle.h"
#include "Tools/zpkpack/Manifest.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using zpk_packager::Progress;
using zpk_packager::ProgressSurface;
using zpk_packager::ProgressText;

namespace zpk_test {

namespace {

using std::chrono::milliseconds;

/// Keeps what it is given.
class KeptSurface : public ProgressSurface {
public:
    explicit KeptSurface(Kind kind) : m_kind(kind) {}

    Kind progressKind() const override { return m_kind; }
    std::size_t columns() const override { return m_columns; }
    bool isProgressColoured() const override { return false; }
    void showInPlace(std::string_view text) override { m_shown.emplace_back(text); }
    void addLine(std::string_view text) override { m_shown.emplace_back(text); }

    Kind m_kind;
    std::size_t m_columns = 80;
    std::vector<std::string> m_shown;
};

class ProgressTest : public PackagerFixture {
protected:
    /// The time that the test says it is; with a step, that much later each time.
    Progress::Clock clock() {
        return [this] {
            m_now += m_step;
            return m_now;
        };
    }

    Progress::TimePoint m_now{milliseconds(1'000'000)};
    milliseconds m_step{0};
};

TEST_F(ProgressTest, LinesComeOnceASecondWhateverHappensBetweenThem) {
    KeptSurface surface(ProgressSurface::Kind::Lines);
    Progress progress(surface, clock());
    progress.begin("packing", 1000);
    for (int step = 0; step < 40; ++step) {
        m_now += milliseconds(100);
        progress.advance(10);
    }
    EXPECT_THAT(surface.m_shown, ElementsAre("packing: 10 % of 1.0 kB, 100 bytes/s, 0:09 left",
                                             "packing: 20 % of 1.0 kB, 100 bytes/s, 0:08 left",
                                             "packing: 30 % of 1.0 kB, 100 bytes/s, 0:07 left",
                                             "packing: 40 % of 1.0 kB, 100 bytes/s, 0:06 left"));
}

TEST_F(ProgressTest, ManyShortPiecesOfWorkGiveNoMoreLinesThanALongOne) {
    KeptSurface surface(ProgressSurface::Kind::Lines);
    Progress progress(surface, clock());
    for (int piece = 0; piece < 25; ++piece) {
        progress.begin("piece " + std::to_string(piece), 100);
        m_now += milliseconds(100);
        progress.advance(100);
    }
    EXPECT_EQ(surface.m_shown.size(), 2U);
}

TEST_F(ProgressTest, AShortWorkGivesNoLine) {
    KeptSurface surface(ProgressSurface::Kind::Lines);
    {
        Progress progress(surface, clock());
        progress.begin("packing", 1000);
        m_now += milliseconds(999);
        progress.advance(1000);
    }
    EXPECT_THAT(surface.m_shown, IsEmpty());
}

TEST_F(ProgressTest, ATerminalHasOneBarThatGoesAtTheEnd) {
    KeptSurface surface(ProgressSurface::Kind::InPlace);
    surface.m_columns = 60;
    {
        Progress progress(surface, clock());
        progress.begin("packing", 2'000'000);
        m_now += milliseconds(99);
        progress.advance(500'000);
        m_now += milliseconds(1);
        progress.advance(0);
        surface.m_columns = 30;
        m_now += milliseconds(900);
        progress.advance(500'000);
    }
    EXPECT_THAT(surface.m_shown, ElementsAre("[########.........................] packing: 25 % of 2.0 MB",
                                             "packing: 50 % of 2.0 MB, 1.0 ", ""));
}

TEST_F(ProgressTest, NobodyWhoWantsQuietSeesAny) {
    KeptSurface surface(ProgressSurface::Kind::None);
    Progress progress(surface, clock());
    EXPECT_FALSE(progress.isShown());
    progress.begin("packing", 1000);
    m_now += milliseconds(10'000);
    progress.advance(10);
    progress.end();
    EXPECT_THAT(surface.m_shown, IsEmpty());
}

TEST_F(ProgressTest, EveryBarIsNarrowerThanTheTerminal) {
    const ProgressText text{"packing Data", 1'234'567'890, 7'000'000'000, milliseconds(61'500)};
    for (std::size_t columns = 0; columns < 200; ++columns) {
        EXPECT_LT(text.bar(columns, false).size(), std::max<std::size_t>(columns, 1)) << columns;
    }
    EXPECT_EQ(text.line(), "packing Data: 17 % of 7.0 GB, 20.1 MB/s, 4:48 left");
    EXPECT_EQ(text.bar(80, false), "[####......................] " + text.line());
    EXPECT_EQ(text.bar(80, true), "[\x1b[36m####\x1b[0m......................] " + text.line());
}

TEST_F(ProgressTest, NumbersThatCannotBeAreBounded) {
    EXPECT_EQ((ProgressText{"a", 0, 0, milliseconds(0)}).line(), "a: 100 % of 0 bytes");
    EXPECT_EQ((ProgressText{"drawing", 4, 16, milliseconds(4000), "languages"}).line(),
              "drawing: 25 % of 16 languages, 0:12 left");
    EXPECT_EQ((ProgressText{"drawing", 0, 16, milliseconds(4000), "languages"}).line(),
              "drawing: 0 % of 16 languages");
    EXPECT_EQ((ProgressText{"a", 9, 3, milliseconds(1000)}).line(),
              "a: 100 % of 3 bytes, 9 bytes/s, 0:00 left");
    EXPECT_EQ((ProgressText{"a", 1, 999'950, milliseconds(1'000'000)}).line(), "a: 0 % of 1.0 MB");
    EXPECT_EQ((ProgressText{"a", 1, 7200, milliseconds(1000)}).line(),
              "a: 0 % of 7.2 kB, 1 bytes/s, 1:59:59 left");
}

TEST_F(ProgressTest, PackingReadingBackAndSummingUpCountToTheirEnd) {
    KeptSurface surface(ProgressSurface::Kind::Lines);
    Progress progress(surface, clock());
    m_step = milliseconds(1000);
    writeFile(m_folder / "source/Data/file", std::string(3'000'000, 'x'));
    const std::string bundle = m_folder / "Made.app";
    writeFile(bundle + "/Contents/Resources/other", std::string(1000, 'y'));
    const zpk_packager::ArchivePacker packer(m_folder.path(), {}, &progress);
    packer.pack(ZPKPackageLayout::Content::Data, m_folder / "source", bundle + "/Contents/Resources");
    zpk_packager::MadeBundle package(bundle);
    zpk_packager::Manifest::ofPackage(package, &progress);
    std::vector<std::string> whats;
    for (const std::string& line : surface.m_shown) {
        const std::string what = line.substr(0, line.find(':'));
        if (whats.empty() || whats.back() != what) {
            whats.push_back(what);
        }
    }
    EXPECT_THAT(whats, ElementsAre("packing Data", "reading back Data", "summing up"));
    for (const std::string& what : whats) {
        std::string last;
        for (const std::string& line : surface.m_shown) {
            last = line.starts_with(what) ? line : last;
        }
        EXPECT_THAT(last, HasSubstr(": 100 % of "));
    }
}

TEST_F(ProgressTest, ReadingAnArchiveOfAPackageCountsToItsEnd) {
    KeptSurface surface(ProgressSurface::Kind::Lines);
    Progress progress(surface, clock());
    m_step = milliseconds(1000);
    const std::string bundle = m_folder / "Made.app";
    writeFile(bundle + "/Contents/Resources/Data.datx", std::string(300'000, 'x'));
    zpk_packager::MadeBundle package(bundle);
    const zpk_archive::ByteSource source =
        package.plainArchive(ZPKPackageLayout::Content::Data, "reading", &progress);
    std::vector<std::uint8_t> buffer(65536);
    while (source(buffer.data(), buffer.size()) > 0) {
    }
    ASSERT_FALSE(surface.m_shown.empty());
    EXPECT_THAT(surface.m_shown.back(), HasSubstr("reading: 100 % of 300.0 kB"));
}

}  // namespace

}  // namespace zpk_test
