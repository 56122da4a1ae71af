// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Support/TestBundle.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
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
    scramble(plain, name);
}

void TestBundle::packMembers(const std::vector<Member>& members, const std::string& name) const {
    std::string archive;
    std::vector<Member> all = members;
    all.push_back({"TRAILER!!!", 0, ""});
    for (std::size_t at = 0; at < all.size(); ++at) {
        const Member& member = all[at];
        char header[128];
        std::snprintf(header, sizeof header, "070707%06o%06zo%06o%06o%06o%06o%06o%011o%06zo%011zo", 0U,
                      at + 1, member.mode, 0U, 0U, 1U, 0U, 1600000000U, member.name.size() + 1,
                      member.contents.size());
        archive += header + member.name + '\0' + member.contents;
    }
    const std::string plain = m_path + "/" + name + ".plain";
    writeFile(plain, archive);
    ASSERT_EQ(std::system(("gzip '" + plain + "'").c_str()), 0);
    scramble(plain + ".gz", name);
}

void TestBundle::scramble(const std::string& plain, const std::string& name) const {
    varno_zpk::CZPKUtil::Fake(plain, resource(name));
    fs::remove(plain);
}

}  // namespace zpk_test
