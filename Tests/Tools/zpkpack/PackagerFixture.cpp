// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Tools/zpkpack/PackagerFixture.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include "Tests/Platform/OtherUser.h"
#include "Tools/zpkpack/PackageBuilder.h"

namespace fs = std::filesystem;

namespace zpk_test {

namespace {

constexpr const char* kTemplateInfo =
    "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Zephyrkit</string>"
    "<key>CFBundleIdentifier</key><string>com.example.Zephyrkit</string>"
    "<key>CFBundleExecutable</key><string>Zephyrkit</string></dict></plist>\n";

}  // namespace

std::string failureOf(const std::function<void()>& action) {
    try {
        action();
        return "";
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

std::string noise(std::size_t size) {
    std::string bytes;
    std::uint32_t state = 1;
    while (bytes.size() < size) {
        state = state * 1103515245U + 12345U;
        bytes += static_cast<char>(state >> 16);
    }
    return bytes;
}

PackagerFixture::PackagerFixture() {
    writeFile(source("Package.strings"),
              "\"CFBundleName\" = \"Hello\";\n\"CFBundleIdentifier\" = \"com.example.Hello\";\n");
    writeFile(source("Info/Startup.xml"), "<Startup Exec=\"$Data$/setup\"/>\n");
    writeFile(source("Data/setup"), "#!/bin/sh\n");
    writeFile(templateBundle("Contents/Info.plist"), kTemplateInfo);
    writeFile(templateBundle("Contents/Linux/Zephyrkit"), "#!/bin/sh\n");
    fs::permissions(templateBundle("Contents/Linux/Zephyrkit"), fs::perms(0755));
    writeFile(templateBundle("Contents/Resources/UILang/Languages.xml"), "template\n");
}

std::string PackagerFixture::source(const std::string& relative) const {
    return m_folder / ("source/" + relative);
}

std::string PackagerFixture::templateBundle(const std::string& relative) const {
    return m_folder / ("Template.app/" + relative);
}

std::string PackagerFixture::output(const std::string& relative) const {
    return m_folder / ("Out.app/" + relative);
}

zpk_packager::BuildOptions PackagerFixture::options() const {
    zpk_packager::BuildOptions options;
    options.sourceFolder = source();
    options.templatePath = templateBundle();
    options.outputPath = output();
    return options;
}

std::string PackagerFixture::build(const zpk_packager::BuildOptions& options) const {
    return failureOf([&] { zpk_packager::PackageBuilder(options).build(); });
}

std::string PackagerFixture::failureAsOrdinaryUser(const std::function<void()>& action) const {
    const std::string answer = m_folder / "answer";
    giveToUserWithoutPrivileges(m_folder.path());
    const auto options = fs::directory_options::skip_permission_denied;
    for (const auto& item : fs::recursive_directory_iterator(m_folder.path(), options)) {
        giveToUserWithoutPrivileges(item.path());
    }
    EXPECT_TRUE(answerWithoutPrivileges([&] {
        std::ofstream(answer) << failureOf(action);
        return true;
    }));
    std::string message = readFile(answer);
    fs::remove(answer);
    return message;
}

std::string PackagerFixture::buildAsOrdinaryUser(const zpk_packager::BuildOptions& options) const {
    return failureAsOrdinaryUser([&] { zpk_packager::PackageBuilder(options).build(); });
}

std::string PackagerFixture::listing() const {
    std::vector<std::string> paths;
    for (const auto& item : fs::recursive_directory_iterator(m_folder.path())) {
        paths.push_back(fs::relative(item.path(), m_folder.path()));
    }
    std::sort(paths.begin(), paths.end());
    std::string text;
    for (const std::string& path : paths) {
        text += path + "\n";
    }
    return text;
}

}  // namespace zpk_test
