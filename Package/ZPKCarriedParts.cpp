// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKCarriedParts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string_view>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFileDescriptor.h"

namespace {

/// The names of all parts, one a line.
const std::string kList = "Parts";
constexpr std::size_t kLongestList = std::size_t{64} * 1024;

ZPKOutcome findRegularFile(const std::string& path) {
    struct stat attributes;
    if (::stat(path.c_str(), &attributes) != 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    if (!S_ISREG(attributes.st_mode) || attributes.st_size == 0) {
        return ZPKFailure(path, "not a file with contents");
    }
    return {};
}

ZPKResult<std::string> contentsOf(const std::string& path) {
    if (ZPKOutcome found = findRegularFile(path); !found) {
        return found.failure();
    }
    const ZPKFileDescriptor file(
        ZPKDescriptorIO::retry([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!file.isOpen()) {
        return ZPKFailure::ofSystem(path, errno);
    }
    std::optional<std::string> text = ZPKDescriptorIO::readToEnd(file.get(), kLongestList);
    if (!text) {
        return ZPKFailure::ofSystem(path, errno);
    }
    return std::move(*text);
}

ZPKOutcome findProgram(const std::string& path) {
    // Says no as well where the file system lets nothing be executed.
    if (::access(path.c_str(), X_OK) != 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    return findRegularFile(path);
}

}  // namespace

ZPKOutcome ZPKCarriedParts::find() const {
    for (const std::string& program : {loader(), this->program()}) {
        if (ZPKOutcome found = findProgram(program); !found) {
            return found;
        }
    }
    const ZPKResult<std::vector<std::string>> parts = listed();
    if (!parts) {
        return parts.failure();
    }
    for (const std::string& part : *parts) {
        if (ZPKOutcome found = findRegularFile(part); !found) {
            return found;
        }
    }
    return {};
}

ZPKResult<std::vector<std::string>> ZPKCarriedParts::listed() const {
    const ZPKResult<std::string> list = contentsOf(path(kList));
    if (!list) {
        return list.failure();
    }
    std::vector<std::string> parts;
    for (std::string_view names = *list; !names.empty();) {
        const std::string_view name = names.substr(0, names.find('\n'));
        names.remove_prefix(std::min(name.size() + 1, names.size()));
        parts.push_back(path(std::string(name)));
    }
    return parts;
}
