// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Package/ZPKCarriedParts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <set>
#include <string_view>

#include "Base/ZPKPath.h"
#include "Base/ZPKRegularFile.h"
#include "Platform/ZPKFileManager.h"
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

using Names = std::vector<std::string>;

/// The libraries that a part needs; only a library or a program needs any.
ZPKResult<Names> needsOf(const std::string& part, bool isProgram) {
    if (isProgram || isLibrary(part)) {
        return ZPKLoadableFile::neededLibraries(part);
    }
    const ZPKOutcome found = findRegularFile(part);
    return found ? ZPKResult<Names>(Names()) : found.failure();
}

}  // namespace

ZPKOutcome ZPKCarriedParts::find(const std::string& user) const {
    Names files{loader(), program()};
    for (const std::string& program : files) {
        // Says no as well where the file system lets nothing be executed.
        if (::access(program.c_str(), X_OK) != 0) {
            return ZPKFailure::ofSystem(program, errno);
        }
    }
    const ZPKResult<Names> parts = listed();
    if (!parts) {
        return parts.failure();
    }
    files.insert(files.end(), parts->begin(), parts->end());
    if (!user.empty()) {
        files.push_back(user);
    }
    return findWithLibraries(std::move(files));
}

ZPKOutcome ZPKCarriedParts::findWithLibraries(Names files) const {
    std::set<std::string> known(files.begin(), files.end());
    for (std::size_t index = 0; index < files.size(); ++index) {
        const std::string file = files[index];
        const ZPKResult<Names> needed = needsOf(file, file == program());
        if (!needed) {
            return needed.failure();
        }
        for (const std::string& name : *needed) {
            std::string library = path(name);
            if (!known.insert(library).second) {
                continue;
            }
            if (name.find('/') != std::string::npos || !ZPKFileManager::fileExists(library)) {
                return ZPKFailure(file, "needs " + name + ", which is not carried");
            }
            files.push_back(std::move(library));
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
