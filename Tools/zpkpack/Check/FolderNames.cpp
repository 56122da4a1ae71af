// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/FolderNames.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace zpk_packager {

namespace {

struct MemoryFree {
    void operator()(utf8proc_uint8_t* memory) const { std::free(memory); }
};

bool isPlain(const std::string& name) {
    return std::all_of(name.begin(), name.end(),
                       [](char each) { return static_cast<unsigned char>(each) < 0x80; });
}

std::string plainInLowerCase(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](char each) {
        return each >= 'A' && each <= 'Z' ? static_cast<char>(each - 'A' + 'a') : each;
    });
    return name;
}

/// The name itself where it is no UTF-8.
std::string mapped(const std::string& name, int options) {
    utf8proc_uint8_t* result = nullptr;
    const utf8proc_ssize_t length = ::utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(name.data()),
                                                   static_cast<utf8proc_ssize_t>(name.size()), &result,
                                                   static_cast<utf8proc_option_t>(options));
    const std::unique_ptr<utf8proc_uint8_t, MemoryFree> owner(result);
    return length < 0 ? name
                      : std::string(reinterpret_cast<const char*>(result), static_cast<std::size_t>(length));
}

std::string composed(const std::string& name) {
    return mapped(name, UTF8PROC_STABLE | UTF8PROC_COMPOSE);
}

/// What names that are alike have in common.
std::string folded(const std::string& name) {
    return isPlain(name) ? plainInLowerCase(name)
                         : mapped(name, UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD);
}

/// Of names that are alike and were collected, in bytes and in number.
constexpr std::size_t kMostCollected = std::size_t{4} << 20;
constexpr std::size_t kMostDoubled = 10000;

/// What paths that are alike have in common.
std::string keyOf(const std::string& path) {
    const std::size_t start = path.rfind('/') + 1;
    return path.substr(0, start) + folded(path.substr(start));
}

std::string leafOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// The key of a path, and the path.
using Collected = std::pair<std::string, std::string>;

}  // namespace

void FolderNames::add(const std::string& path) {
    m_hashes.add(NameHashes::hashOf(keyOf(path)));
}

void FolderNames::findAlike(const Reader& again, const Visitor& visit) {
    findInPart(again, visit);
    while (m_hashes.nextPart()) {
        again([this](const std::string& path) { add(path); });
        findInPart(again, visit);
    }
}

void FolderNames::findInPart(const Reader& again, const Visitor& visit) {
    m_hashes.sort();
    const std::vector<std::uint64_t> doubled = m_hashes.doubled(kMostDoubled);
    if (doubled.empty()) {
        return;
    }
    std::vector<Collected> names;
    std::size_t size = 0;
    again([&](const std::string& path) {
        std::string key = keyOf(path);
        if (size < kMostCollected &&
            std::binary_search(doubled.begin(), doubled.end(), NameHashes::hashOf(key))) {
            size += sizeof(Collected) + key.size() + path.size();
            names.emplace_back(std::move(key), path);
        }
    });
    std::sort(names.begin(), names.end());
    for (std::size_t at = 1; at < names.size(); ++at) {
        const std::string& one = names[at - 1].second;
        const std::string& other = names[at].second;
        if (names[at].first == names[at - 1].first && one != other) {
            const bool isSameText = composed(leafOf(one)) == composed(leafOf(other));
            visit(one, other, isSameText ? Likeness::Form : Likeness::Case);
        }
    }
}

}  // namespace zpk_packager
