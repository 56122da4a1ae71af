// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Lists a folder as the disc search does, or matches every path against a pattern, and says in how
// many milliseconds: the part that has a peer, and the part that must not explode.
//   zpk_search_driver list FOLDER
//   zpk_search_driver match FOLDER PATTERN

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "Common/WildCard.h"
#include "Package/CZPKUtil.h"

using Clock = std::chrono::steady_clock;

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s list FOLDER | match FOLDER PATTERN\n", argv[0]);
        return 64;
    }
    const Clock::time_point start = Clock::now();
    std::vector<std::string> paths;
    varno_zpk::CZPKUtil::GetFilePathList(argv[2], &paths);
    const Clock::time_point listed = Clock::now();
    std::size_t matches = 0;
    if (argc > 3) {
        for (const std::string& path : paths) {
            matches += varno_zpk::WildCard::Match(argv[3], path) ? 1U : 0U;
        }
    }
    const Clock::time_point matched = Clock::now();
    const auto milliseconds = [](Clock::duration time) {
        return static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(time).count()) /
               1000;
    };
    std::printf("%zu files, %zu matches, list %.1f ms, match %.1f ms\n", paths.size(), matches,
                milliseconds(listed - start), milliseconds(matched - listed));
    return 0;
}
