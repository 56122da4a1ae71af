// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace zpk_test {

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "zpk-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder " + name);
    }
    m_path = name;
}

TemporaryFolder::~TemporaryFolder() {
    if (::testing::Test::HasFailure()) {
        std::cerr << "kept: " << m_path << "\n";
        return;
    }
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void writeFile(const std::string& path, std::string_view contents) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    file.close();
    ASSERT_TRUE(file.good()) << "cannot write " << path;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << "cannot read " << path;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace zpk_test
