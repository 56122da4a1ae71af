// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <filesystem>

#include "Tests/Archive/ArchiveFixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zpk_test;

TEST(CommandLineTest, OnlyTheTwoArgumentVectorsAreTaken) {
    TemporaryFolder folder;
    writeFile(folder / "D/a", "a");
    const std::string source = folder / "D";
    const std::string archive = folder / "d.dat";
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {},
             {"-c"},
             {"--help"},
             {"-c", "-z", "--rsrc", "--keepParent", source, archive},
             {"-c", "-z", "-rsrc", source, archive},
             {"-z", "-c", "-rsrc", "--keepParent", source, archive},
             {"-c", "-z", "-rsrc", "--keepParent", source},
             {"-c", "-z", "-rsrc", "--keepParent", source, archive, archive},
             {"-x", "-z", "-rsrc", archive, source},
             {"-x", "-z", "--rsrc", archive},
             {"-x", "--rsrc", "-z", archive, source}}) {
        std::vector<std::string> command = {ZPK_DITTO};
        command.insert(command.end(), arguments.begin(), arguments.end());
        Outcome outcome = runProgram(command);
        EXPECT_EQ(outcome.exitStatus, 64);
        EXPECT_EQ(outcome.standardError,
                  "usage: ditto -c -z -rsrc --keepParent SRC DST | ditto -x -z --rsrc SRC DST\n");
    }
    EXPECT_FALSE(fs::exists(archive));
}

TEST(CommandLineTest, CallsNoOtherProgram) {
    TemporaryFolder folder;
    writeFile(folder / "D/a", "a");
    if (!hasProgram("strace")) {
        GTEST_SKIP() << "strace is not installed";
    }
    for (const std::string& line : {"-c -z -rsrc --keepParent " + (folder / "D") + " " + (folder / "d"),
                                    "-x -z --rsrc " + (folder / "d") + " " + (folder / "out")}) {
        std::string trace = folder / "trace";
        if (std::system(("strace -f -e trace=execve -o " + trace + " " ZPK_DITTO " " + line).c_str()) != 0) {
            GTEST_SKIP() << "processes cannot be traced here";
        }
        std::string calls = readFile(trace);
        EXPECT_EQ(calls.find("execve("), calls.rfind("execve(")) << calls;
    }
    EXPECT_EQ(readFile(folder / "out/D/a"), "a");
}

}  // namespace
