// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKCarriedParts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string_view>

#include "Base/ZPKPath.h"
#include "Base/ZPKRegularFile.h"
#include "Platform/ZPKLoadableFile.h"

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

bool isLibrary(const std::string& path) {
    return ZPKPath::lastComponent(path).find(".so") != std::string::npos;
}

ZPKOutcome findPart(const std::string& path) {
    return isLibrary(path) ? ZPKLoadableFile::check(path) : findRegularFile(path);
}

ZPKOutcome findProgram(const std::string& path) {
    // Says no as well where the file system lets nothing be executed.
    if (::access(path.c_str(), X_OK) != 0) {
        return ZPKFailure::ofSystem(path, errno);
    }
    return ZPKLoadableFile::check(path);
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
        if (ZPKOutcome found = findPart(part); !found) {
            return found;
        }
    }
    return {};
}

ZPKResult<std::vector<std::string>> ZPKCarriedParts::listed() const {
    const std::string place = path(kList);
    if (ZPKOutcome found = findRegularFile(place); !found) {
        return found.failure();
    }
    const std::optional<std::string> list = ZPKRegularFile::contents(place, kLongestList);
    if (!list) {
        return ZPKFailure::ofSystem(place, errno);
    }
    std::vector<std::string> parts;
    for (std::string_view names = *list; !names.empty();) {
        const std::string_view name = names.substr(0, names.find('\n'));
        names.remove_prefix(std::min(name.size() + 1, names.size()));
        parts.push_back(path(std::string(name)));
    }
    return parts;
}
