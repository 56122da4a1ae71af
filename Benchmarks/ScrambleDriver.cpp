// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// zpk_scramble_driver fake|unfake SRC DST: one run of one direction, then the seconds that it took and
// the process's peak memory in KiB on standard output.

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "Package/CZPKUtil.h"

int main(int count, char** arguments) {
    const std::string direction = count == 4 ? arguments[1] : "";
    if (direction != "fake" && direction != "unfake") {
        std::fprintf(stderr, "usage: zpk_scramble_driver fake|unfake SRC DST\n");
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    if (direction == "fake") {
        varno_zpk::CZPKUtil::Fake(arguments[2], arguments[3]);
    } else {
        varno_zpk::CZPKUtil::Unfake(arguments[2], arguments[3]);
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("%.4f %ld\n", elapsed.count(), usage.ru_maxrss);
    return 0;
}
