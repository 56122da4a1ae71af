// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The setup program of the packages that are opened in other systems' folders. It needs nothing of them, and
// leaves in the folder that ZPK_TEST_RECORD names what it was started with and what it has installed. With a
// pipe "hold" in there it goes on living until somebody has written to that.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

namespace {

using Path = std::filesystem::path;

/// Each text with a zero behind it.
void writeTexts(const Path& file, char** texts) {
    std::ofstream stream(file, std::ios::binary);
    for (char** text = texts; *text != nullptr; ++text) {
        stream << *text << '\0';
    }
}

void record(const Path& folder, char** argv) {
    std::ofstream(folder / "runs", std::ios::app) << "ran\n";
    writeTexts(folder / "arguments", argv);
    writeTexts(folder / "environment", environ);
    std::ofstream(folder / "folder") << std::filesystem::current_path().string();
}

void waitWhileHeld(const Path& pipe) {
    if (std::filesystem::exists(pipe)) {
        std::string line;
        std::getline(std::ifstream(pipe), line);
    }
}

}  // namespace

int main(int, char** argv) {
    const char* folder = std::getenv("ZPK_TEST_RECORD");
    if (folder == nullptr) {
        return EXIT_FAILURE;
    }
    record(folder, argv);
    std::filesystem::copy_file(Path(argv[0]).parent_path() / "product", Path(folder) / "installed");
    std::cout << "setup: ran" << std::endl;
    waitWhileHeld(Path(folder) / "hold");
    return EXIT_SUCCESS;
}
