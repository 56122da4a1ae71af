// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/InstructionCount.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "Tests/Support/TemporaryFolder.h"

namespace zpk_test {

double instructionsOf(const std::vector<std::string>& command, int status) {
    const TemporaryFolder folder;
    const std::string log = folder / "log";
    std::string line = "valgrind --tool=callgrind --callgrind-out-file=/dev/null --log-file='" + log + "'";
    for (const std::string& word : command) {
        line += " '" + word + "'";
    }
    const int ended = std::system((line + " 2>/dev/null").c_str());
    EXPECT_TRUE(WIFEXITED(ended) && WEXITSTATUS(ended) == status) << line;
    const std::string report = readFile(log);
    const std::string label = "Collected : ";
    const std::size_t count = report.find(label);
    if (count == std::string::npos) {
        ADD_FAILURE() << report;
        return 0;
    }
    return std::stod(report.substr(count + label.size()));
}

}  // namespace zpk_test
