// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKStagingFolder.h"

#include <fcntl.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "Package/CDirectoryHolder.h"
#include "Package/CZPKUtil.h"
#include "Package/ZPKArchiveTool.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKPrivateFolder.h"
#include "Platform/ZPKStandardFolders.h"

using varno_zpk::CDirectoryHolder;
using varno_zpk::CZPKUtil;
using Content = ZPKPackageLayout::Content;

ZPKResult<std::unique_ptr<ZPKStagingFolder>> ZPKStagingFolder::make() {
    const std::optional<std::string> temporaryFolder = ZPKStandardFolders::temporaryFolder();
    if (!temporaryFolder) {
        return ZPKFailure(ZPKPackageLayout::stagingFolder(""),
                          ZPKStandardFolders::reasonForNoTemporaryFolder());
    }
    std::unique_ptr<ZPKStagingFolder> folder(
        new ZPKStagingFolder(ZPKPackageLayout::stagingFolder(*temporaryFolder)));
    if (const ZPKOutcome made = folder->makePrivate(); !made) {
        return made.failure();
    }
    return folder;
}

ZPKStagingFolder::ZPKStagingFolder(std::string path)
    : m_path(std::move(path)), m_holder(std::make_unique<CDirectoryHolder>("", m_path)) {}

ZPKStagingFolder::~ZPKStagingFolder() {
    m_reserve.clear();
}

/// Whatever else the process may hold when the folder is to go, its removal finds the descriptors that it
/// takes: the folder's own place, and two levels below.
ZPKOutcome ZPKStagingFolder::reserveDescriptors() {
    constexpr std::size_t kTakenByRemoval = 3;
    while (m_reserve.size() < kTakenByRemoval) {
        m_reserve.emplace_back(::open("/", O_PATH | O_CLOEXEC));
        if (!m_reserve.back().isOpen()) {
            return ZPKFailure::ofSystem(m_path, errno);
        }
    }
    return {};
}

/// The holder only removes: a folder that it makes is as open as the umask leaves it, and nobody could
/// tell afterwards whether it was made or had stood there and could not be cleared away.
ZPKOutcome ZPKStagingFolder::makePrivate() {
    // While none is kept aside, what an earlier run left goes with fewer descriptors than this run takes.
    const ZPKOutcome removed = ZPKFileManager::removeItem(m_path);
    if (ZPKOutcome reserved = reserveDescriptors(); !reserved) {
        return reserved;
    }
    ZPKResult<ZPKFileDescriptor> made = ZPKPrivateFolder::makeNewAndOpen(m_path);
    if (!made) {
        const bool somethingStayed =
            !removed && removed.failure().reason() != ZPKFailure::systemReason(ENOENT);
        return somethingStayed ? removed : made.failure();
    }
    // It takes the place of one that was kept aside: its own place is what the removal begins with.
    m_held.emplace(m_path, std::move(*made));
    m_reserve.pop_back();
    return {};
}

ZPKOutcome ZPKStagingFolder::unpackDescription(const std::string& resourceFolder,
                                               ZPKArchiveTool& tool) const {
    const std::string plainPath = ZPKPackageLayout::plainArchive(m_path, Content::Info);
    CZPKUtil::Unfake(ZPKPackageLayout::scrambledArchive(resourceFolder, Content::Info), plainPath);
    ZPKOutcome outcome = tool.unpack(plainPath, m_path);
    CZPKUtil::DeleteFile(plainPath);
    return outcome;
}
