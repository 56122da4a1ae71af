// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The unpacking half of the archive tool with its check of names broken on purpose: ".." is a folder like any
// other. Shows what the cage stops then.

#include <cstdio>
#include <cstring>
#include <functional>

#include "Archive/Archive.h"
#include "Archive/MemberPath.h"

namespace zpk_archive {

// These take the places of the library's own.

MemberPath::MemberPath(std::string_view name) {
    for (std::size_t start = 0; start <= name.size();) {
        const std::size_t end = std::min(name.find('/', start), name.size());
        append(name.substr(start, end - start));
        start = end + 1;
    }
}

void MemberPath::append(std::string_view component) {
    m_starts.push_back(static_cast<std::uint32_t>(m_components.size()));
    m_components.append(component).push_back('\0');
}

MemberPath MemberPath::sibling(std::string_view) const {
    return *this;
}

std::string MemberPath::text() const {
    std::string text;
    for (std::size_t i = 0; i < depth(); ++i) {
        text += std::string(i == 0 ? "" : "/") + component(i);
    }
    return text;
}

std::size_t MemberPath::hash() const {
    return std::hash<std::string>()(m_components);
}

}  // namespace zpk_archive

namespace {

class PrintingSink : public zpk_archive::ErrorSink {
public:
    void error(const std::string& name, const std::string& reason) override {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), reason.c_str());
    }
    void warning(const std::string& name, const std::string& reason) override { error(name, reason); }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        return 64;
    }
    PrintingSink sink;
    const bool isCaged = std::strcmp(argv[1], "caged") == 0;
    const bool isGood = isCaged ? zpk_archive::extractInCage(argv[2], argv[3], sink)
                                : zpk_archive::extract(argv[2], argv[3], sink);
    return isGood ? 0 : 1;
}
