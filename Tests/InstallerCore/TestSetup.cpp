// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// A setup program for tests: writes its own path and its arguments, one a line and each in brackets,
// to the file that ZPK_TEST_RECORD names.

#include <cstdlib>
#include <filesystem>
#include <fstream>

int main(int argc, char** argv) {
    const char* record = std::getenv("ZPK_TEST_RECORD");
    if (record == nullptr) {
        return EXIT_FAILURE;
    }
    std::ofstream file(record, std::ios::app);
    file << std::filesystem::read_symlink("/proc/self/exe").string() << "\n";
    for (int index = 1; index < argc; ++index) {
        file << "[" << argv[index] << "]\n";
    }
    return 3;
}
