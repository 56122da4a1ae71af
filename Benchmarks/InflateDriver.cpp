// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// zpk_inflate_driver ARCHIVE: reads an archive to its end as unpacking does, and writes nothing.

#include <cstddef>
#include <cstdio>
#include <string>

#include "Archive/Archive.h"
#include "Archive/ErrorSink.h"

namespace {

class Complaints : public zpk_archive::ErrorSink {
public:
    void error(const std::string& name, const std::string& reason) override {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), reason.c_str());
    }
    void warning(const std::string& name, const std::string& reason) override { error(name, reason); }
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: zpk_inflate_driver ARCHIVE\n");
        return 64;
    }
    Complaints complaints;
    std::size_t members = 0;
    const bool isGood = zpk_archive::list(
        arguments[1], [&](const zpk_archive::MemberDescription&) { ++members; }, complaints);
    std::printf("%zu members\n", members);
    return isGood ? 0 : 1;
}
