// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Tests/InstallerCore/ZPKCoreFixture.h"

namespace zpk_test {

inline constexpr const char* kProducts =
    R"(<TargetItems><ItemInfo DisplayName="Tandem &lt;b&gt;"/><ItemInfo DisplayName="Set"/></TargetItems>)";

/// A machine on which products can be made to be installed.
class ConditionsFixture : public ZPKCoreFixture {
protected:
    void installSoftwareList(const std::string& contents) {
        writeFile(m_library + "/Preferences/com.varno.ic_installer.plist", contents);
    }

    void installSignature(const std::string& signature) {
        installSoftwareList(
            "<plist><dict><key>Varno "
            "Utilities</key><array><integer>1</integer><string>other</string><string>" +
            signature + "</string></array></dict></plist>");
    }

    void installUninstallDescription(const std::string& name) {
        writeFile(m_library + "/Application Support/Varno_Inc_IC/Tandemset/Uninstall/" + name, "");
    }
};

}  // namespace zpk_test
