// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/MemberPath.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <functional>

#include "Archive/Failure.h"

namespace zpk_archive {

namespace {

/// No call takes a path with more. The kernel looks at all folders on the way to each one that the archive
/// tool makes in its cage, so that a name of many thousands would hold it up for minutes.
constexpr std::size_t kDeepest = 2048;
static_assert(kDeepest >= PATH_MAX / 2);

/// False for a component that adds no step to the path.
bool isStep(std::string_view component) {
    if (component == "..") {
        throw MemberFailure("the name climbs out of the folder");
    }
    if (component.size() > NAME_MAX) {
        throw MemberFailure("a part of the name is too long");
    }
    if (component.find('\0') != std::string_view::npos) {
        throw MemberFailure("the name holds a null character");
    }
    return !component.empty() && component != ".";
}

}  // namespace

MemberPath::MemberPath(std::string_view name) {
    if (name.empty()) {
        throw MemberFailure("the name is empty");
    }
    if (name.front() == '/') {
        throw MemberFailure("the name is absolute");
    }
    m_components.reserve(name.size() + 1);
    for (std::size_t start = 0; start <= name.size();) {
        const std::size_t end = std::min(name.find('/', start), name.size());
        const std::string_view component = name.substr(start, end - start);
        if (isStep(component)) {
            if (depth() == kDeepest) {
                throw MemberFailure("the name has more than 2048 parts");
            }
            append(component);
        }
        start = end + 1;
    }
}

void MemberPath::append(std::string_view component) {
    m_starts.push_back(static_cast<std::uint32_t>(m_components.size()));
    m_components.append(component).push_back('\0');
}

MemberPath MemberPath::sibling(std::string_view leaf) const {
    assert(!isFolderItself());
    MemberPath path = *this;
    path.m_components.resize(path.m_starts.back());
    path.m_starts.pop_back();
    path.append(leaf);
    return path;
}

std::string MemberPath::text() const {
    std::string text = m_components.substr(0, m_components.size() - (isFolderItself() ? 0 : 1));
    std::replace(text.begin(), text.end(), '\0', '/');
    return text;
}

std::size_t MemberPath::hash() const {
    return std::hash<std::string>()(m_components);
}

}  // namespace zpk_archive
