// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The setup program of the example package: says what it was given, and installs the greeting that
// lies beside it in the payload.

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace fs = std::filesystem;

namespace {

fs::path targetFolder() {
    if (const char* dataHome = std::getenv("XDG_DATA_HOME"); dataHome != nullptr && *dataHome == '/') {
        return fs::path(dataHome) / "HelloSetup";
    }
    const char* home = std::getenv("HOME");
    return fs::path(home != nullptr ? home : "/tmp") / ".local/share/HelloSetup";
}

}  // namespace

int main(int argc, char** argv) {
    std::cout << "setup: started with " << argc - 1 << " argument(s)";
    for (int index = 1; index < argc; ++index) {
        std::cout << " [" << argv[index] << "]";
    }
    std::cout << std::endl;

    std::error_code error;
    const fs::path payload = fs::read_symlink("/proc/self/exe", error).parent_path();
    const fs::path target = targetFolder();
    fs::create_directories(target, error);
    fs::copy_file(payload / "Greeting.txt", target / "Greeting.txt", fs::copy_options::overwrite_existing,
                  error);
    if (error) {
        std::cerr << "setup: cannot install the greeting: " << error.message() << std::endl;
        return EXIT_FAILURE;
    }
    std::cout << "setup: installed " << (target / "Greeting.txt").string() << std::endl;
    return EXIT_SUCCESS;
}
