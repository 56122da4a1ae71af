// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tools/zpkpack/BuildOptions.h"
#include "Tools/zpkpack/CarriedWindows.h"
#include "Tools/zpkpack/LauncherTemplate.h"
#include "Tools/zpkpack/OutputPlace.h"
#include "Tools/zpkpack/PackageDescription.h"
#include "Tools/zpkpack/PackageIcon.h"
#include "Tools/zpkpack/PackageSource.h"
#include "Tools/zpkpack/PackageSummary.h"
#include "Tools/zpkpack/Progress.h"

namespace zpk_packager {

/// Makes a runnable bundle, or one file with a bundle inside, of a package source. It is made beside its
/// final place, checked, and only then put there, so that the output never holds half a package, whatever
/// ends the work.
class PackageBuilder {
public:
    /// `progress`, if it is given, shows the work, and outlives the builder.
    explicit PackageBuilder(const BuildOptions& options, Progress* progress = nullptr);

    /// Leaves the package or, when it throws `PackagerFailure`, nothing. A signal that asks the process
    /// to end does so when all is cleaned up. Called while the process has one thread.
    PackageSummary build() const;

private:
    PackageDescription check() const;
    std::vector<std::string> copiedFolders() const;
    void make(const PackageDescription& description, const std::string& workFolder,
              const std::string& bundle) const;
    void makeRunFile(const std::string& bundle, const std::string& path) const;
    void copyLanguages(const std::string& resourceFolder) const;

    PackageSource m_source;
    LauncherTemplate m_template;
    CarriedWindows m_windows;
    OutputPlace m_output;
    PackageIcon m_icon;
    std::string m_runProgram;
    std::optional<std::int64_t> m_time;
    Progress* m_progress;
};

}  // namespace zpk_packager
