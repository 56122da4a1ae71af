// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/MemberName.h"

#include <climits>

#include "Archive/Failure.h"

namespace zpk_archive {

namespace {

void appendComponent(std::string_view component, std::vector<std::string>& components) {
    if (component.empty() || component == ".") {
        return;
    }
    if (component == "..") {
        throw MemberFailure("the name climbs out of the folder");
    }
    if (component.size() > NAME_MAX) {
        throw MemberFailure("a part of the name is too long");
    }
    components.emplace_back(component);
}

}  // namespace

std::vector<std::string> splitMemberName(std::string_view name) {
    if (name.empty()) {
        throw MemberFailure("the name is empty");
    }
    if (name.front() == '/') {
        throw MemberFailure("the name is absolute");
    }
    std::vector<std::string> components;
    for (std::size_t start = 0; start <= name.size();) {
        std::size_t end = std::min(name.find('/', start), name.size());
        appendComponent(name.substr(start, end - start), components);
        start = end + 1;
    }
    return components;
}

}  // namespace zpk_archive
