// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/OutputPlace.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

#include "Base/ZPKPath.h"
#include "Package/ZPKPackageLayout.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr const char* kBundleExtension = "app";
constexpr const char* kRunFileExtension = "run";

bool renameWithFlag(const std::string& from, const std::string& to, unsigned int flag) {
    return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flag) == 0;
}

bool isUnknownFlag(int error) {
    return error == EINVAL || error == ENOSYS;
}

}  // namespace

OutputPlace::OutputPlace(const std::string& path, bool replace)
    : m_path(ZPKPath::withoutTrailingSeparators(path)), m_replace(replace), m_isReplaceable(true) {}

OutputPlace::OutputPlace(const std::string& path)
    : m_path(ZPKPath::withoutTrailingSeparators(path)), m_replace(false), m_isReplaceable(false) {}

void OutputPlace::check(const std::string& sourceFolder,
                        const std::vector<std::string>& copiedFolders) const {
    if (const std::string fault = faultOfName(m_path); !fault.empty()) {
        throw PackagerFailure(m_path, fault);
    }
    checkFree();
    std::vector<std::string> inputs{sourceFolder};
    inputs.insert(inputs.end(), copiedFolders.begin(), copiedFolders.end());
    for (const std::string& input : inputs) {
        // A link to the input is no protection: what it leads to would be lost.
        if (ZPKPath::isItemOrInside(ZPKPath::resolved(input), m_path)) {
            throw PackagerFailure(m_path + " is or holds " + input + ", of which the bundle is made");
        }
    }
    for (const auto content : {ZPKPackageLayout::Content::Info, ZPKPackageLayout::Content::Data}) {
        checkOutside(ZPKPackageLayout::folder(sourceFolder, content), "which is packed");
    }
    checkOutside(ZPKPackageLayout::languageFolder(sourceFolder), "which is packed");
    for (const std::string& copied : copiedFolders) {
        checkOutside(copied, "of which the bundle is made");
    }
}

std::string OutputPlace::faultOfName(const std::string& path) {
    const std::string extension = ZPKPath::extension(ZPKPath::withoutTrailingSeparators(path));
    return extension == kBundleExtension || extension == kRunFileExtension
               ? ""
               : "the name of a package ends in .app, or in .run for one file";
}

bool OutputPlace::isRunFile() const {
    return ZPKPath::extension(m_path) == kRunFileExtension;
}

std::string OutputPlace::bundleName() const {
    const std::string name = ZPKPath::lastComponent(m_path);
    return name.substr(0, name.rfind('.') + 1) + kBundleExtension;
}

bool OutputPlace::isTaken() const {
    struct stat attributes;
    return ::lstat(m_path.c_str(), &attributes) == 0;
}

void OutputPlace::checkFree() const {
    if (!m_replace && isTaken()) {
        throw PackagerFailure(m_path + " exists" + (m_isReplaceable ? "; --force replaces it" : ""));
    }
}

void OutputPlace::checkOutside(const std::string& folder, const std::string& why) const {
    const std::string resolved = ZPKPath::resolved(folder);
    if (!resolved.empty() && ZPKPath::isItemOrInside(m_path, resolved)) {
        throw PackagerFailure(m_path + " lies in " + folder + ", " + why);
    }
}

void OutputPlace::put(const std::string& made) const {
    // Somebody else may have taken the place meanwhile.
    checkFree();
    if (isTaken()) {
        exchange(made);
    } else {
        putInFreePlace(made);
    }
}

void OutputPlace::putInFreePlace(const std::string& made) const {
    if (renameWithFlag(made, m_path, RENAME_NOREPLACE) ||
        (isUnknownFlag(errno) && ::rename(made.c_str(), m_path.c_str()) == 0)) {
        return;
    }
    throw PackagerFailure::ofSystem(m_path, errno);
}

void OutputPlace::exchange(const std::string& made) const {
    if (renameWithFlag(made, m_path, RENAME_EXCHANGE)) {
        return;
    }
    const std::string aside = made + ".old";
    if (!isUnknownFlag(errno) || ::rename(m_path.c_str(), aside.c_str()) != 0) {
        throw PackagerFailure::ofSystem(m_path, errno);
    }
    if (::rename(made.c_str(), m_path.c_str()) != 0) {
        const int error = errno;
        ::rename(aside.c_str(), m_path.c_str());
        throw PackagerFailure::ofSystem(m_path, error);
    }
}

}  // namespace zpk_packager
