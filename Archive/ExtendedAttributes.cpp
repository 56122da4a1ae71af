// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/ExtendedAttributes.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>

#include "Archive/Failure.h"

namespace zpk_archive {

namespace {

constexpr std::string_view kPrefix = "user.";

/// Calls `get(buffer, size)` until the value fits, for it may grow between two calls.
template <typename Get>
std::string readWhole(const Get& get) {
    std::string value;
    for (;;) {
        ssize_t size = get(nullptr, 0);
        if (size <= 0) {
            return size < 0 ? throw MemberFailure::ofSystem(errno) : value;
        }
        value.resize(static_cast<std::size_t>(size));
        size = get(value.data(), value.size());
        if (size >= 0) {
            value.resize(static_cast<std::size_t>(size));
            return value;
        }
        if (errno != ERANGE) {
            throw MemberFailure::ofSystem(errno);
        }
    }
}

std::string listNames(int descriptor) {
    // Most files have none, and one call tells.
    ssize_t size = ::flistxattr(descriptor, nullptr, 0);
    if (size == 0 || (size < 0 && (errno == ENOTSUP || errno == ENOSYS))) {
        return {};
    }
    return readWhole([&](char* bytes, std::size_t room) { return ::flistxattr(descriptor, bytes, room); });
}

/// Lends the owner the write permission that setting an attribute takes, and takes it back.
class WritePermission {
public:
    WritePermission(const std::string& path, mode_t permissions) : m_path(path), m_permissions(permissions) {
        if (!writable() && ::chmod(m_path.c_str(), m_permissions | S_IWUSR) != 0) {
            throw MemberFailure::ofSystem(errno);
        }
    }
    ~WritePermission() {
        if (!writable()) {
            ::chmod(m_path.c_str(), m_permissions);
        }
    }
    WritePermission(const WritePermission&) = delete;
    WritePermission& operator=(const WritePermission&) = delete;

private:
    bool writable() const { return (m_permissions & S_IWUSR) != 0; }

    const std::string& m_path;
    mode_t m_permissions;
};

}  // namespace

AttributeMap readAttributes(int descriptor) {
    AttributeMap attributes;
    std::string names = listNames(descriptor);
    for (std::size_t start = 0; start < names.size();) {
        std::string name = names.c_str() + start;
        start += name.size() + 1;
        if (name.starts_with(kPrefix)) {
            attributes[name.substr(kPrefix.size())] = readWhole([&](char* bytes, std::size_t room) {
                return ::fgetxattr(descriptor, name.c_str(), bytes, room);
            });
        }
    }
    return attributes;
}

void writeAttributes(int descriptor, const AttributeMap& attributes) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throw MemberFailure::ofSystem(errno);
    }
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        throw MemberFailure("only files and folders have extended attributes");
    }
    // A path-only descriptor needs no permission to be opened, and this path leads to nothing else.
    std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    WritePermission permission(path, status.st_mode & 07777);
    for (const auto& [name, value] : attributes) {
        std::string fullName = std::string(kPrefix) + name;
        if (::setxattr(path.c_str(), fullName.c_str(), value.data(), value.size(), 0) != 0) {
            throw MemberFailure::ofSystem(errno);
        }
    }
}

}  // namespace zpk_archive
