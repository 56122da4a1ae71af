// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Stands in the place of a bundle's archive tool and lets the unpacking of the payload wait where a test
// wants to look at the progress window: until the pipe "gate" in the folder that ZPK_TEST_RECORD names has
// had a writer, where there is such a pipe. Then it becomes the real tool, which lies beside it. It needs
// nothing of the system that it runs on.

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

namespace {

bool unpacksPayload(char** argv) {
    for (char** argument = argv; *argument != nullptr; ++argument) {
        if (std::string_view(*argument).ends_with("/Data.dat")) {
            return true;
        }
    }
    return false;
}

}  // namespace

int main(int, char** argv) {
    const char* folder = std::getenv("ZPK_TEST_RECORD");
    if (folder != nullptr && unpacksPayload(argv)) {
        std::string line;
        std::getline(std::ifstream(std::string(folder) + "/gate"), line);
    }
    const std::string tool = std::string(argv[0]) + ".real";
    ::execv(tool.c_str(), argv);
    return EXIT_FAILURE;
}
