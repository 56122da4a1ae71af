// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/FolderNames.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

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

}  // namespace

void FolderNames::findAlike(const std::vector<std::string>& names, const Visitor& visit) {
    // Hashes first: a folder of many names is the usual case, names that are alike are not.
    std::vector<std::pair<std::size_t, std::size_t>> hashes;
    hashes.reserve(names.size());
    for (std::size_t index = 0; index < names.size(); ++index) {
        hashes.emplace_back(std::hash<std::string>()(folded(names[index])), index);
    }
    std::sort(hashes.begin(), hashes.end());
    for (std::size_t at = 1; at < hashes.size(); ++at) {
        const std::string& one = names[hashes[at - 1].second];
        const std::string& other = names[hashes[at].second];
        if (hashes[at].first == hashes[at - 1].first && folded(one) == folded(other)) {
            const bool isSameText = composed(one) == composed(other);
            visit(hashes[at - 1].second, hashes[at].second, isSameText ? Likeness::Form : Likeness::Case);
        }
    }
}

}  // namespace zpk_packager
