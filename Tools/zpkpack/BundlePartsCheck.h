// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/FindingList.h"
#include "Tools/zpkpack/MadePackage.h"

namespace zpk_packager {

/// Looks whether a made package has what it is opened by and runs on, and whether its names fit each other.
class BundlePartsCheck {
public:
    /// Both outlive the object.
    BundlePartsCheck(MadePackage& package, FindingList& findings)
        : m_package(package), m_findings(findings) {}

    void run();

private:
    void checkParts();
    void checkNames();
    void checkLauncher(const std::string& name);
    void checkFile(const char* check, const std::string& path, bool isProgram);

    MadePackage& m_package;
    FindingList& m_findings;
};

}  // namespace zpk_packager
