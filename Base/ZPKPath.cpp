// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Base/ZPKPath.h"

#include <cstdlib>
#include <memory>

namespace {

struct MemoryFree {
    void operator()(char* memory) const { std::free(memory); }
};

}  // namespace

std::string ZPKPath::join(const std::string& folder, const std::string& component) {
    if (folder.empty()) {
        return component;
    }
    std::string head = withoutTrailingSeparators(folder);
    const std::size_t start = component.find_first_not_of('/');
    if (start == std::string::npos) {
        return head;
    }
    return (head == "/" ? head : head + "/") + component.substr(start);
}

std::string ZPKPath::withoutTrailingSeparators(std::string_view path) {
    const std::size_t last = path.find_last_not_of('/');
    return std::string(last == std::string_view::npos ? path.substr(0, 1) : path.substr(0, last + 1));
}

std::string ZPKPath::lastComponent(const std::string& path) {
    const std::string plain = withoutTrailingSeparators(path);
    const std::size_t separator = plain.rfind('/');
    return separator == std::string::npos || plain == "/" ? plain : plain.substr(separator + 1);
}

std::string ZPKPath::parent(const std::string& path) {
    const std::string plain = withoutTrailingSeparators(path);
    const std::size_t separator = plain.rfind('/');
    return separator == std::string::npos ? "." : withoutTrailingSeparators(plain.substr(0, separator + 1));
}

std::string ZPKPath::extension(const std::string& path) {
    const std::string name = lastComponent(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

bool ZPKPath::isSameOrInside(std::string_view inner, std::string_view outer) {
    const std::string folder = withoutTrailingSeparators(outer);
    if (folder.empty() || folder == "/") {
        return !folder.empty() && inner.starts_with('/');
    }
    return inner.starts_with(folder) && (inner.size() == folder.size() || inner[folder.size()] == '/');
}

std::string ZPKPath::resolved(const std::string& path) {
    const std::unique_ptr<char, MemoryFree> found(::realpath(path.c_str(), nullptr));
    return found ? found.get() : "";
}

std::string ZPKPath::resolvedItem(const std::string& path) {
    const std::string name = lastComponent(path);
    if (name.empty() || name == "." || name == ".." || name == "/") {
        return resolved(path);
    }
    // The dot lets a file on the way count as no folder.
    const std::string folder = resolved(parent(path) + "/.");
    return folder.empty() ? folder : join(folder, name);
}

bool ZPKPath::isItemOrInside(const std::string& inner, const std::string& outer) {
    return isSameOrInside(resolvedItem(inner), resolvedItem(outer));
}
