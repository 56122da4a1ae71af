// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

#include "Archive/GzipWriter.h"
#include "Archive/OutputFile.h"
#include "Tests/Archive/HostileArchiveFixture.h"
#include "Tests/Archive/OverlappingTables.h"
#include "Tests/Support/InstructionCount.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

using MemberMaker = std::function<RawMember(unsigned)>;
using Append = void (*)(std::string&, const RawMember&);

/// A compressed archive of so many members, made piece by piece: it may be larger than the memory.
void writeArchive(const std::string& path, Append append, unsigned members, const MemberMaker& make) {
    zpk_archive::OutputFile output(path);
    zpk_archive::GzipWriter gzip(output);
    std::string bytes;
    const auto handOn = [&] {
        gzip.write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        bytes.clear();
    };
    for (unsigned i = 0; i < members; ++i) {
        append(bytes, make(i));
        handOn();
    }
    append(bytes, {"TRAILER!!!", 0});
    handOn();
    gzip.finish();
    output.commit();
}

/// A path of `levels` folders with long names, and a leaf of its own for each number.
std::string deepName(unsigned levels, const std::string& leaf, unsigned number) {
    std::string name;
    for (unsigned i = 0; i < levels; ++i) {
        name += std::string(250, 'd') + "/";
    }
    return name + leaf + std::to_string(number);
}

/// A program that wants the machine's memory fails instead of getting it.
void takeNoMoreThanAGigabyte() {
    const rlimit limit{1 << 30, 1 << 30};
    ::setrlimit(RLIMIT_AS, &limit);
}

class ArchiveMemoryTest : public ::testing::Test {
protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "the sanitizer takes memory of its own";
#endif
    }

    Outcome extractMade(Append append, unsigned members, const MemberMaker& make) {
        fs::remove_all(m_folder / "in");
        writeArchive(m_folder / "archive", append, members, make);
        return extract(m_folder / "archive", m_folder / "in", takeNoMoreThanAGigabyte);
    }

    const TemporaryFolder m_folder;
};

struct Load {
    const char* name;
    Append append;
    unsigned members;
    RawMember (*make)(unsigned);
    int exitStatus;
};

class ArchiveLoadTest : public ArchiveMemoryTest, public ::testing::WithParamInterface<Load> {};

TEST_P(ArchiveLoadTest, TakesLittleMemory) {
    const Load& load = GetParam();
    const Outcome outcome = extractMade(load.append, load.members, load.make);
    EXPECT_EQ(outcome.exitStatus, load.exitStatus) << outcome.standardError;
    EXPECT_LT(outcome.peakMemory, 64 * 1024);
}

INSTANTIATE_TEST_SUITE_P(
    Loads, ArchiveLoadTest,
    ::testing::Values(
        Load{"LongNamesOfFilesWithOthers", appendOdc, 1500,
             [](unsigned i) {
                 return RawMember{"../" + std::string(100000, 'n') + std::to_string(i), kFile, "", i, 2};
             },
             1},
        Load{"FoldersFarDown", appendOdc, 3000,
             [](unsigned i) {
                 return RawMember{deepName(100, "folder ", i), kFolder};
             },
             0},
        Load{"FoldersInEachOther", appendOdc, 900,
             [](unsigned i) {
                 return RawMember{deepName(i + 1, "", 0).substr(0, 251 * (i + 1) - 1), kFolder};
             },
             0},
        Load{"OneFolderAgainAndAgain", appendOdc, 400000,
             [](unsigned) {
                 return RawMember{"one folder", kFolder};
             },
             0},
        Load{"FilesThatWaitForTheirOtherNames", appendOdc, 10000,
             [](unsigned i) {
                 return RawMember{deepName(40, "file ", i), kFile, "", i + 1, 2};
             },
             0},
        Load{"FilesThatWaitForTheirData", appendNewc, 10000,
             [](unsigned i) {
                 return RawMember{deepName(40, "file ", i), kFile, "", i + 1, 2};
             },
             0},
        Load{"LargestOfSmallFiles", appendOdc, 3000,
             [](unsigned i) {
                 return RawMember{std::to_string(i), kFile, std::string(std::size_t{32} << 10, 'x')};
             },
             0},
        Load{"AttributesThatWaitForTheirFiles", appendOdc, 10000,
             [](unsigned i) {
                 return RawMember{deepName(40, "._file ", i), kFile, kEmptyAppleDouble};
             },
             0},
        Load{"AttributesThatAreAllTheSameBytes", appendOdc, 2,
             [](unsigned i) {
                 return i == 0 ? RawMember{"file", kFile, "x"}
                               : RawMember{"._file", kFile, makeOverlappingTables(64, 4'000'000)};
             },
             0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ArchiveMemoryTest, DataThatComeForAFileForgottenAreAnError) {
    const Outcome outcome = extractMade(appendNewc, 2001, [](unsigned i) {
        return i < 2000 ? RawMember{deepName(40, "file ", i), kFile, "", i + 1, 2}
                        : RawMember{"last", kFile, "the data of the first", 1, 2};
    });
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.standardError,
              "ditto: last: the archive has more files with several names than can be kept in mind\n");
}

TEST_F(ArchiveMemoryTest, ModesAndTimesOfMoreFoldersThanAreKeptAreRight) {
    // Too many for the memory, in the order in which a tree is packed; each shuts its owner out.
    std::vector<std::string> names;
    for (unsigned group = 0; group < 9; ++group) {
        std::string parent = "group " + std::to_string(group);
        for (int level = 0; level < 5; ++level) {
            names.push_back(parent);
            parent += "/" + std::string(200, 'p');
        }
        for (unsigned i = 0; i < 1000; ++i) {
            names.push_back(parent + std::to_string(i));
        }
    }
    const std::string folder = m_folder / "in";
    fs::create_directory(folder);
    chmod(m_folder.path().c_str(), 0755);
    chmod(folder.c_str(), 0777);
    writeArchive(m_folder / "archive", appendOdc, static_cast<unsigned>(names.size()), [&](unsigned i) {
        return RawMember{names[i], S_IFDIR | 0511};
    });
    const Outcome outcome = extract(m_folder / "archive", folder, becomeNobody);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.standardError;
    const auto inside = snapshot(folder);
    EXPECT_EQ(inside.size(), names.size());
    std::size_t wrong = 0;
    for (const auto& [name, description] : inside) {
        wrong += description == "type 40000 mode 511 time 1000000000 " ? 0U : 1U;
    }
    EXPECT_EQ(wrong, 0U);
}

/// How many thousands the few members are, of which four times as many cost four times as much: with more,
/// what grows faster shows even where it costs little for each. ZPK_GROWTH names another number.
unsigned thousands() {
    const char* const growth = std::getenv("ZPK_GROWTH");
    return growth == nullptr ? 1 : static_cast<unsigned>(std::strtoul(growth, nullptr, 10));
}

/// Members of one kind.
struct Growth {
    const char* name;
    RawMember (*make)(unsigned);
    int exitStatus = 0;
};

class ArchiveGrowthTest : public ArchiveMemoryTest, public ::testing::WithParamInterface<Growth> {
protected:
    double instructionsFor(unsigned members, const MemberMaker& make, int exitStatus = 0) {
        writeArchive(m_folder / "archive", appendOdc, members, make);
        fs::remove_all(m_folder / "in");
        return instructionsOf({ZPK_DITTO, "-x", "-z", "--rsrc", m_folder / "archive", m_folder / "in"},
                              exitStatus);
    }
};

TEST_P(ArchiveGrowthTest, FourTimesAsManyCostFourTimesAsMuch) {
    const auto& [name, make, exitStatus] = GetParam();
    const unsigned few = 1000 * thousands();
    EXPECT_LT(instructionsFor(4 * few, make, exitStatus), 5 * instructionsFor(few, make, exitStatus));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ArchiveGrowthTest,
    ::testing::Values(
        Growth{"FilesWithNamesElsewhere",
               [](unsigned i) {
                   return RawMember{std::to_string(i), kFile, "", i + 1, 2};
               }},
        Growth{"NamesOfOneFile",
               [](unsigned i) {
                   // No more names than file systems let a file have.
                   return RawMember{std::to_string(i), kFile, "", 1 + i / 60000, 100000};
               }},
        Growth{"Folders",
               [](unsigned i) {
                   return RawMember{"folder " + std::to_string(i), kFolder};
               }},
        Growth{"LongNames",
               [](unsigned i) {
                   return RawMember{deepName(4, "file ", i), kFile, "x"};
               }},
        Growth{"NamesThatAreRefused",
               [](unsigned i) {
                   return RawMember{"../" + std::string(1000, 'n') + std::to_string(i), kFile, "x"};
               },
               1}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ArchiveGrowthTest, LinksToAFileFarDownCostNoMoreThanOthers) {
    const auto linksToFileAt = [](unsigned levels) {
        return [levels](unsigned i) {
            std::string way;
            for (unsigned level = 0; i < 2 && level < (i == 0 ? levels : 300); ++level) {
                way += "d/";
            }
            return RawMember{way + std::to_string(i), kFile, "x", i == 1 ? 2U : 1U, i == 1 ? 1U : 1000U};
        };
    };
    EXPECT_LT(instructionsFor(302, linksToFileAt(300)), 1.5 * instructionsFor(302, linksToFileAt(0)));
}

}  // namespace
