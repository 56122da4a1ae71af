// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PackageExtractor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <vector>

#include "Archive/Archive.h"
#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKPropertyList.h"
#include "Tools/zpkpack/CheckFailure.h"
#include "Tools/zpkpack/FirstErrorSink.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SourceWriter.h"

namespace zpk_packager {

namespace {

using Content = ZPKPackageLayout::Content;

constexpr const char* kInfoPlist = "Contents/Info.plist";
constexpr const char* kResourceFolder = "Contents/Resources";
constexpr std::size_t kLargestInfoPlist = std::size_t{1} << 20;
constexpr std::size_t kStep = std::size_t{256} * 1024;
constexpr mode_t kFileMode = 0644;

constexpr mode_t kCopiedPermissions = 0777;

}  // namespace

void PackageExtractor::extractTo(const std::string& source) const {
    SourceWriter::makeFolder(source);
    SourceWriter::writeFile(ZPKPackageLayout::packageStrings(source),
                            SourceWriter::packageStrings(description()), kFileMode);
    extractLanguages(source);
    extractIcon(source);
    extractArchive(Content::Info, source);
    extractArchive(Content::Data, source);
    // Another build refuses what no build has made.
    static_cast<void>(PackageDescription::read(source));
}

PackageDescription PackageExtractor::description() const {
    const std::string bytes = m_package.contents(kInfoPlist, kLargestInfoPlist);
    const std::optional<ZPKPropertyList> list = ZPKPropertyList::dictionaryWithBytes(bytes);
    PackageDescription description;
    if (list) {
        description.bundleName = list->stringForKey("CFBundleName").value_or("");
        description.bundleIdentifier = list->stringForKey("CFBundleIdentifier").value_or("");
        description.displayName = list->stringForKey(ZPKBundle::kDisplayNameKey).value_or("");
    }
    if (description.bundleName.empty() || description.bundleIdentifier.empty()) {
        throw PackagerFailure(m_package.nameOf(kInfoPlist), "it does not name the bundle and its identifier");
    }
    return description;
}

void PackageExtractor::extractArchive(Content content, const std::string& source) const {
    const std::string name = m_package.nameOf(MadePackage::archivePath(content));
    const std::string folder = ZPKPackageLayout::plainArchive(m_workFolder, content);
    FirstErrorSink sink;
    const std::string what = std::string("unpacking ") + ZPKPackageLayout::name(content);
    if (!zpk_archive::extract(name, m_package.plainArchive(content, what, m_progress), folder, sink)) {
        throw PackagerFailure(name, CheckFailure::reasonIn(sink.text(), name));
    }
    // Anything else in it would get lost, or into the way of the other one.
    std::vector<std::string> names;
    require(ZPKFileManager::contentsOfFolder(folder, names));
    const std::string wanted = ZPKPackageLayout::name(content);
    const std::string from = ZPKPackageLayout::folder(folder, content);
    if (names != std::vector<std::string>{wanted} || !ZPKFileManager::isFolderNotFollowingLinks(from)) {
        throw PackagerFailure(name, "it does not hold the folder " + wanted + " and nothing else");
    }
    if (::rename(from.c_str(), ZPKPackageLayout::folder(source, content).c_str()) != 0) {
        throw PackagerFailure::ofSystem(from, errno);
    }
}

void PackageExtractor::extractLanguages(const std::string& source) const {
    const std::string top = ZPKPackageLayout::languageFolder(kResourceFolder);
    std::vector<std::pair<std::string, mode_t>> folders;
    for (const MadePackage::Item& item : m_package.items()) {
        if (ZPKPath::isSameOrInside(item.path, top)) {
            const std::string path = source + item.path.substr(std::string(kResourceFolder).size());
            extractItem(item, path);
            if (item.kind == MadePackage::Kind::Folder) {
                folders.emplace_back(path, item.mode & kCopiedPermissions);
            }
        }
    }
    // Last, since a folder that may not be written takes nothing.
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
        if (::chmod(folder->first.c_str(), folder->second) != 0) {
            throw PackagerFailure::ofSystem(folder->first, errno);
        }
    }
}

void PackageExtractor::extractIcon(const std::string& source) const {
    const MadePackage::Item* const icon = m_package.find(ZPKPackageLayout::icon(kResourceFolder));
    if (icon != nullptr) {
        extractItem(*icon, ZPKPackageLayout::icon(source));
    }
}

void PackageExtractor::extractItem(const MadePackage::Item& item, const std::string& path) const {
    switch (item.kind) {
        case MadePackage::Kind::Folder:
            SourceWriter::makeFolder(path);
            break;
        case MadePackage::Kind::File:
            extractFile(item, path);
            break;
        case MadePackage::Kind::Link:
            if (::symlink(item.target.c_str(), path.c_str()) != 0) {
                throw PackagerFailure::ofSystem(path, errno);
            }
            break;
        case MadePackage::Kind::Other:
            throw PackagerFailure(m_package.nameOf(item.path), "neither file nor folder nor link");
    }
}

void PackageExtractor::extractFile(const MadePackage::Item& item, const std::string& path) const {
    ZPKFileDescriptor file(ZPKDescriptorIO::retry(
        [&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR); }));
    bool isWritten = file.isOpen();
    std::vector<char> buffer(kStep);
    std::uint64_t done = 0;
    while (isWritten) {
        const std::size_t got = m_package.read(item, done, buffer.data(), buffer.size());
        if (got == 0) {
            break;
        }
        isWritten = ZPKDescriptorIO::writeWhole(file.get(), buffer.data(), got);
        done += got;
    }
    if (!isWritten || ::fchmod(file.get(), item.mode & kCopiedPermissions) != 0 || !file.close()) {
        throw PackagerFailure::ofSystem(path, errno);
    }
}

}  // namespace zpk_packager
