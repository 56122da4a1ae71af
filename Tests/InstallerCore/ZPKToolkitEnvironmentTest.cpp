// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKToolkitEnvironment.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "Base/ZPKEnvironment.h"
#include "Package/ZPKCarriedParts.h"
#include "Tests/Platform/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using zpk_test::ScopedEnvironment;
using zpk_test::TemporaryFolder;

class ZPKToolkitEnvironmentTest : public ::testing::Test {
protected:
    ZPKToolkitEnvironmentTest() {
        std::filesystem::create_directory(m_runtime);
        ::chmod(m_runtime.c_str(), 0700);
    }

    void set() const { ZPKToolkitEnvironment::set(ZPKCarriedParts(m_folder / "Frameworks")); }

    TemporaryFolder m_folder;
    const std::string m_runtime = m_folder / "run time";
    ScopedEnvironment m_temporary{"TMPDIR", m_folder.path()};
    ScopedEnvironment m_session{"XDG_RUNTIME_DIR", m_runtime};
    ScopedEnvironment m_bus{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/bus"};
    ScopedEnvironment m_compositor{"WAYLAND_DISPLAY", "wayland-0"};
};

TEST_F(ZPKToolkitEnvironmentTest, KnowsWhatIsForAnotherToolkit) {
    for (const char* const name :
         {"QT_PLUGIN_PATH", "QT_QPA_PLATFORM_PLUGIN_PATH", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE",
          "QT_X", "FONTCONFIG_FILE", "XKB_CONFIG_ROOT", "XKB_CONFIG_EXTRA_PATH", "G_DEBUG", "LOCPATH"}) {
        EXPECT_TRUE(ZPKToolkitEnvironment::isForAnotherToolkit(name)) << name;
    }
    for (const char* const name : {"QT_QPA_PLATFORM", "QT_SCALE_FACTOR", "QT", "DISPLAY",
                                   "XKB_DEFAULT_LAYOUT", "LANG", "LD_PRELOAD", "PATH", ""}) {
        EXPECT_FALSE(ZPKToolkitEnvironment::isForAnotherToolkit(name)) << name;
    }
}

TEST_F(ZPKToolkitEnvironmentTest, ASessionStaysAsItIs) {
    set();
    EXPECT_EQ(ZPKEnvironment::value("XDG_RUNTIME_DIR"), m_runtime);
    EXPECT_EQ(ZPKEnvironment::value("DBUS_SESSION_BUS_ADDRESS"), "unix:path=/bus");
    EXPECT_EQ(ZPKEnvironment::value("WAYLAND_DISPLAY"), "wayland-0");
    EXPECT_EQ(ZPKEnvironment::value("FONTCONFIG_FILE"), m_folder / "Frameworks/fonts/fonts.conf");
}

TEST_F(ZPKToolkitEnvironmentTest, ARunTimeFolderThatTheToolkitWouldNotTakeIsReplaced) {
    ::chmod(m_runtime.c_str(), 0755);
    set();
    const std::string folder = ZPKEnvironment::value("XDG_RUNTIME_DIR").value_or("");
    struct stat attributes;
    ASSERT_EQ(::lstat(folder.c_str(), &attributes), 0) << folder;
    EXPECT_EQ(attributes.st_mode, S_IFDIR | 0700U);
    EXPECT_NE(::mkdir((folder + "/new").c_str(), 0700), 0) << "it is to take nothing";
    EXPECT_EQ(ZPKEnvironment::value("WAYLAND_DISPLAY"), m_runtime + "/wayland-0");
    const std::filesystem::directory_iterator left(m_folder.path());
    EXPECT_EQ(std::distance(begin(left), end(left)), 1) << "beside the session's folder";
}

TEST_F(ZPKToolkitEnvironmentTest, WithoutABusTheSessionsOwnIsTheOnlyOne) {
    const ScopedEnvironment bus("DBUS_SESSION_BUS_ADDRESS", "");
    set();
    EXPECT_EQ(ZPKEnvironment::value("DBUS_SESSION_BUS_ADDRESS"),
              "unix:path=" + m_folder.path() + "/run%20time/bus");
}

}  // namespace
