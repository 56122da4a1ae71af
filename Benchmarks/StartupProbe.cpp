// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The setup program of the start-up benchmark: writes the time at which it runs, in seconds of the
// monotonic clock, to the file that ZPK_STARTUP_TIME names.

#include <time.h>

#include <cstdio>
#include <cstdlib>

int main() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const char* path = std::getenv("ZPK_STARTUP_TIME");
    std::FILE* file = path != nullptr ? std::fopen(path, "w") : nullptr;
    if (file == nullptr) {
        return EXIT_FAILURE;
    }
    std::fprintf(file, "%lld.%09ld\n", static_cast<long long>(now.tv_sec), now.tv_nsec);
    return std::fclose(file) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
