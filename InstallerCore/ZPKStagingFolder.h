// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"
#include "Platform/ZPKHeldFolder.h"

class ZPKArchiveTool;

namespace varno_zpk {
class CDirectoryHolder;
}

/// The run's private folder, into which the package is unpacked and from which the setup program runs.
/// Its owner alone may look into it, whatever the umask. It is held: what is done to what it holds means this
/// folder, wherever it has gone. Goes, with all that it holds, when this object does; what then stands in its
/// place stays. Main thread only.
class ZPKStagingFolder {
public:
    /// Makes the staging folder in the user's folder for temporary files, in the place of anything that
    /// an earlier run left. Fails when something stays there, when what is there then is not a real
    /// folder that this run has made, empty and its own, or when no descriptors can be kept aside for
    /// its removal. An exception of the making passes on.
    static ZPKResult<std::unique_ptr<ZPKStagingFolder>> make();

    ~ZPKStagingFolder();
    ZPKStagingFolder(const ZPKStagingFolder&) = delete;
    ZPKStagingFolder& operator=(const ZPKStagingFolder&) = delete;

    /// Full path, without a separator at its end.
    const std::string& path() const { return m_path; }

    /// Unscrambles and unpacks the description archive of `resourceFolder`. What cannot be unpacked is
    /// missing afterwards; the failure is the archive tool's.
    ZPKOutcome unpackDescription(const std::string& resourceFolder, ZPKArchiveTool& tool) const;

private:
    explicit ZPKStagingFolder(std::string path);

    ZPKOutcome reserveDescriptors();
    ZPKOutcome makePrivate();

    std::string m_path;
    std::vector<ZPKFileDescriptor> m_reserve;
    std::optional<ZPKHeldFolder> m_held;
    std::unique_ptr<varno_zpk::CDirectoryHolder> m_holder;
};
