// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageSummary.h"

#include <sys/stat.h>

#include <cerrno>
#include <string_view>
#include <vector>

#include "Base/ZPKPath.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr std::string_view kParts = "Contents/Frameworks";
constexpr std::string_view kModules = "Contents/PlugIns";

/// "libX.so.6" and "libqxcb.so", but not "Some.sort".
bool isLibrary(const std::string& path) {
    const std::string name = ZPKPath::lastComponent(path);
    return name.ends_with(".so") || name.find(".so.") != std::string::npos;
}

struct stat attributesOf(const std::string& path) {
    struct stat attributes;
    if (::lstat(path.c_str(), &attributes) != 0) {
        throw PackagerFailure::ofSystem(path, errno);
    }
    return attributes;
}

void add(PackageSummary::Files& files, std::uint64_t size) {
    ++files.count;
    files.size += size;
}

std::string bytes(std::uint64_t size) {
    return std::to_string(size) + " bytes";
}

}  // namespace

PackageSummary PackageSummary::ofBundle(const std::string& path) {
    PackageSummary summary;
    std::vector<std::string> items;
    require(ZPKFileManager::subpathsOfFolder(path, items));
    for (const std::string& item : items) {
        const struct stat attributes = attributesOf(ZPKPath::join(path, item));
        if (!S_ISREG(attributes.st_mode)) {
            continue;
        }
        const auto size = static_cast<std::uint64_t>(attributes.st_size);
        add(summary.whole, size);
        if (ZPKPath::isSameOrInside(item, kParts)) {
            add(summary.parts, size);
            summary.libraries += isLibrary(item) ? 1U : 0U;
        }
        summary.hasWindows = summary.hasWindows || ZPKPath::isSameOrInside(item, kModules);
    }
    return summary;
}

std::uint64_t PackageSummary::sizeOfFile(const std::string& path) {
    return static_cast<std::uint64_t>(attributesOf(path).st_size);
}

std::string PackageSummary::text() const {
    std::string windows = "none, it runs on the terminal";
    if (parts.count > 0) {
        windows = std::to_string(libraries) + " libraries carried, " + bytes(parts.size);
    } else if (hasWindows) {
        windows = "where the machine has the libraries";
    }
    std::string lines = "windows: " + windows + "\nbundle: " + std::to_string(whole.count) + " files, " +
                        bytes(whole.size) + "\n";
    if (runFileSize > 0) {
        lines += "one file: " + bytes(runFileSize) + "\n";
    }
    return lines;
}

}  // namespace zpk_packager
