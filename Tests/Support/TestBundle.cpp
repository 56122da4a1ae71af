// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/TestBundle.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "Package/CZPKUtil.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMainBundle.h"
#include "Tests/Support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace zpk_test {

std::string TestBundle::name() {
    return "TestSetup-" + std::to_string(getpid());
}

TestBundle::TestBundle(const std::string& path) : m_path(path) {
    writeFile(path + "/Contents/Info.plist",
              "<plist><dict><key>CFBundleName</key><string>" + name() +
                  "</string><key>CFBundleIdentifier</key><string>com.example." + name() +
                  "</string></dict></plist>");
    fs::create_directories(path + "/Contents/Resources");
    fs::create_directories(path + "/Contents/Helpers");
    fs::create_symlink(ZPK_TEMPLATE_BUNDLE "/Contents/Helpers/ditto", path + "/Contents/Helpers/ditto");
    const auto bundle = ZPKBundle::bundleWithPath(path);
    if (!bundle) {
        throw std::runtime_error(path + " is no bundle");
    }
    ZPKMainBundle::setMainBundle(*bundle);
}

void TestBundle::pack(const std::string& folder, const std::string& name) const {
    const std::string plain = m_path + "/" + name + ".plain";
    varno_zpk::CZPKUtil::Compress(folder, plain);
    ASSERT_TRUE(fs::exists(plain)) << "the archive tool made nothing of " << folder;
    varno_zpk::CZPKUtil::Fake(plain, resource(name));
    fs::remove(plain);
}

}  // namespace zpk_test
