// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Tests/Archive/ArchiveFixture.h"

namespace zpk_test {

inline constexpr std::uint32_t kFile = S_IFREG | 0644;
inline constexpr std::uint32_t kFolder = S_IFDIR | 0755;
inline constexpr std::uint32_t kLink = S_IFLNK | 0777;

/// Extended attributes in a file of their own: none.
inline const std::string kEmptyAppleDouble = std::string("\0\5\x16\7\0\2\0\0", 8) + std::string(18, '\0');

/// A folder to extract into, `in`, whose neighbours must stay as they are.
class HostileArchiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        writeFile(m_folder / "sentinel", "untouched");
        writeFile(m_folder / "outside/file", "untouched");
        writeFile(m_folder / "in-evil/file", "untouched");
        std::filesystem::create_directory(m_folder / "in");
        chmod((m_folder / "sentinel").c_str(), 0640);
        m_before = neighbours();
    }

    void TearDown() override { EXPECT_EQ(neighbours(), m_before); }

    std::map<std::string, std::string> neighbours() {
        auto all = snapshot(m_folder.path());
        std::erase_if(all, [](const auto& item) {
            return item.first == "archive" || item.first == "in" || item.first.starts_with("in/");
        });
        return all;
    }

    void letNobodyIn() {
        chmod(m_folder.path().c_str(), 0755);
        chmod((m_folder / "in").c_str(), 0777);
    }

    Outcome extractMembers(const std::vector<RawMember>& members) {
        writeFile(m_folder / "archive", makeOdc(members));
        return extract(m_folder / "archive", m_folder / "in");
    }

    TemporaryFolder m_folder;
    std::map<std::string, std::string> m_before;
};

}  // namespace zpk_test
