// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// What a check of the installation conditions came to.
struct ZPKConditionAnswer {
    /// Whether the package may be installed as the machine is now.
    bool isMet = false;

    /// When not: the display names of the products that the package applies to.
    std::vector<std::string> products;

    /// When not: the paths or patterns of the files of which one identifies the disc that would do.
    std::vector<std::string> discPaths;
};

/// Whether a package may be installed on this machine. Main thread only.
class ZPKConditionCheck {
public:
    ZPKConditionCheck() = delete;

    /// Checks the condition description at `path`, which belongs to what was unpacked into
    /// `stagingFolder`. Met when there is none, or when a product that it names is installed. Not met,
    /// and nothing listed, when there is one that cannot be read, a link out of the staging folder included.
    static ZPKConditionAnswer check(const std::string& path, const std::string& stagingFolder);

    /// Whether the signature stands, exactly so, in the list of installed software.
    static bool isSignatureInstalled(const std::string& signature);

    /// Whether an uninstall description of that name exists; an empty name asks for their folder.
    static bool isUninstallDescriptionThere(const std::string& name);
};
