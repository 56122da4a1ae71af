// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tools/zpkpack/Check/DescriptionText.h"
#include "Tools/zpkpack/Check/FindingList.h"

namespace zpk_packager {

/// Looks at `Info/Startup.xml`, and at the setup program that the launcher would run, found as it finds it.
class StartupCheck {
public:
    explicit StartupCheck(FindingList& findings) : m_findings(findings) {}

    /// `folder` holds `Info` and `Data`.
    void run(const std::string& folder);

private:
    /// Where the program is named.
    struct Mention {
        std::string path;
        TextPlace place;
        std::string exec;
    };

    void checkParameter(DescriptionText& text);
    void checkNamed(const Mention& mention, const std::string& dataFolder);
    void checkInData(const Mention& mention, const std::string& program, const std::string& dataFolder);
    void checkFirst(const Mention& mention, const std::string& dataFolder);

    FindingList& m_findings;
};

}  // namespace zpk_packager
