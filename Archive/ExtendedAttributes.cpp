// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/ExtendedAttributes.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>

#include "Archive/DiskCalls.h"
#include "Archive/Failure.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

constexpr std::string_view kPrefix = "user.";

/// Calls `get(buffer, size)` until the value fits, for it may grow between two calls.
template <typename Get>
std::string readWhole(const Get& get) {
    std::string value;
    for (;;) {
        ssize_t size = ZPKDescriptorIO::retry([&] { return get(nullptr, 0); });
        if (size <= 0) {
            return size < 0 ? throw MemberFailure::ofSystem(errno) : value;
        }
        value.resize(static_cast<std::size_t>(size));
        size = ZPKDescriptorIO::retry([&] { return get(value.data(), value.size()); });
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
    const ssize_t size = ZPKDescriptorIO::retry([&] { return ::flistxattr(descriptor, nullptr, 0); });
    if (size == 0 || (size < 0 && (errno == ENOTSUP || errno == ENOSYS))) {
        return {};
    }
    return readWhole([&](char* bytes, std::size_t room) { return ::flistxattr(descriptor, bytes, room); });
}

/// Lends the owner the write permission that setting an attribute takes, and takes it back.
class WritePermission {
public:
    WritePermission(const std::string& path, mode_t permissions) : m_path(path), m_permissions(permissions) {
        if (!writable() && !change(m_permissions | S_IWUSR)) {
            throw MemberFailure::ofSystem(errno);
        }
    }
    ~WritePermission() {
        if (!writable()) {
            change(m_permissions);
        }
    }
    WritePermission(const WritePermission&) = delete;
    WritePermission& operator=(const WritePermission&) = delete;

private:
    bool writable() const { return (m_permissions & S_IWUSR) != 0; }
    bool change(mode_t mode) const {
        return ZPKDescriptorIO::retry([&] { return ::chmod(m_path.c_str(), mode); }) == 0;
    }

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
    if (!DiskCalls::status(descriptor, status)) {
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
        const auto set = [&, &text = value] {
            return ::setxattr(path.c_str(), fullName.c_str(), text.data(), text.size(), 0);
        };
        if (ZPKDescriptorIO::retry(set) != 0) {
            throw MemberFailure::ofSystem(errno);
        }
    }
}

}  // namespace zpk_archive
