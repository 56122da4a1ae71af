// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Has an attribute joiner hear of MADE files, of which the first FAILED were not made after all:
//   zpk_attribute_joiner_tool FOLDER MADE FAILED

#include <cstdlib>
#include <string>

#include "Archive/AttributeJoiner.h"
#include "Archive/ErrorSink.h"
#include "Archive/FolderWriter.h"

namespace {

class SilentSink : public zpk_archive::ErrorSink {
public:
    void error(const std::string&, const std::string&) override {}
    void warning(const std::string&, const std::string&) override {}
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        return 64;
    }
    SilentSink sink;
    zpk_archive::FolderWriter writer(arguments[1]);
    zpk_archive::AttributeJoiner joiner(writer, sink);
    const int made = std::atoi(arguments[2]);
    const int failed = std::atoi(arguments[3]);
    for (int i = 0; i < made; ++i) {
        joiner.thingMade(zpk_archive::MemberPath(std::to_string(i)));
    }
    for (int i = 0; i < failed; ++i) {
        joiner.thingFailed(zpk_archive::MemberPath(std::to_string(i)));
    }
    joiner.finish();
    return 0;
}
