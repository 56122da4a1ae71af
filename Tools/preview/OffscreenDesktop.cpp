// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/preview/OffscreenDesktop.h"

#include <dlfcn.h>
#include <sys/mman.h>

#include <QApplication>
#include <QPalette>
#include <QtPlugin>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKEnvironment.h"
#include "Base/ZPKFailure.h"
#include "Base/ZPKPath.h"
#include "InstallerCore/ZPKToolkitEnvironment.h"
#include "Package/ZPKCarriedParts.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKProcess.h"
#include "UserInterface/ZPKDesktopPlugIn.h"

namespace {

constexpr const char* kTemplate = "Zephyrkit.app";
constexpr const char* kScreenPlugIn = "$ORIGIN/zephyrkit-preview-screen.so";

constexpr int kScreenWidth = 1920;
constexpr int kScreenHeight = 1080;

bool isOfScreensOrLanguages(std::string_view name) {
    for (const std::string_view prefix : {"QT_", "LC_", "DISPLAY", "WAYLAND_", "LANG"}) {
        if (name.starts_with(prefix)) {
            return true;
        }
    }
    return false;
}

void set(const char* variable, const std::string& value) {
    ::setenv(variable, value.c_str(), 1);
}

/// The toolkit reads what its screen is like from a file. The descriptor stays open with the process.
std::string screenFile(int scale) {
    const std::string text =
        "{\"screens\":[{\"name\":\"preview\",\"x\":0,\"y\":0,\"width\":" + std::to_string(kScreenWidth) +
        ",\"height\":" + std::to_string(kScreenHeight) +
        ",\"logicalDpi\":96,\"logicalBaseDpi\":96,\"dpr\":" + std::to_string(scale) + "}]}";
    const int descriptor = ::memfd_create("screen", MFD_CLOEXEC);
    if (descriptor < 0 || !ZPKDescriptorIO::writeWhole(descriptor, text)) {
        throw std::runtime_error(ZPKFailure::ofSystem("screen", errno).message());
    }
    return "/proc/self/fd/" + std::to_string(descriptor);
}

void setEnvironment(const std::string& language, int scale, const std::string& frameworks) {
    ZPKEnvironment::remove(isOfScreensOrLanguages);
    set("LC_ALL", language + ".UTF-8");
    set("QT_QPA_PLATFORM", "offscreen:configfile=" + screenFile(scale));
    if (!frameworks.empty()) {
        ZPKToolkitEnvironment::set(ZPKCarriedParts(frameworks));
    }
}

void* openLibrary(const std::string& path) {
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw std::runtime_error(::dlerror());
    }
    return library;
}

void* symbolOf(void* library, const char* name) {
    void* const symbol = ::dlsym(library, name);
    if (symbol == nullptr) {
        throw std::runtime_error(::dlerror());
    }
    return symbol;
}

/// The bundle carries plug-ins for the screens that people have; this one lies beside this program.
void registerScreen() {
    void* const library = openLibrary(kScreenPlugIn);
    const auto instance = reinterpret_cast<QtPluginInstanceFunction>(symbolOf(library, "qt_plugin_instance"));
    const auto description =
        reinterpret_cast<QtPluginMetaDataFunction>(symbolOf(library, "qt_plugin_query_metadata_v2"));
    qRegisterStaticPluginFunction(QStaticPlugin(instance, description));
}

QPalette darkPalette() {
    const QColor window(45, 45, 48);
    const QColor text(230, 230, 230);
    const QColor faded(130, 130, 130);
    QPalette palette(window, window);
    palette.setColor(QPalette::Base, QColor(30, 30, 32));
    palette.setColor(QPalette::Highlight, QColor(48, 140, 198));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, faded);
    }
    return palette;
}

}  // namespace

std::unique_ptr<ZPKFrontEnd> OffscreenDesktop::open(const std::string& resourceFolder,
                                                    const std::string& name, const std::string& language,
                                                    const Look& look) {
    static char program[] = "zephyrkit-preview";
    static char* arguments[] = {program, nullptr};
    const std::string running = ZPKProcess::executablePath("self").value_or("/");
    const std::string folder = ZPKPath::parent(running);
    // Started on the template's parts, the process has the loader's path.
    const bool isCarried = running == ZPKCarriedParts(folder).loader();
    const std::string frameworks = isCarried ? folder : "";
    setEnvironment(language, look.scale, frameworks);
    if (isCarried) {
        registerScreen();
    }
    // A dollar sign in a path is a mark to the loader, but not in what $ORIGIN stands for.
    const std::string module =
        isCarried ? std::string("$ORIGIN/") + kTemplate + "/Contents/PlugIns/" + kDesktopModuleName
                  : ZPKPath::join(folder, kTemplate) + "/Contents/PlugIns/" + kDesktopModuleName;
    const auto create = reinterpret_cast<ZPKDesktopEntry>(symbolOf(openLibrary(module), ZPKDesktopEntryName));
    std::unique_ptr<ZPKFrontEnd> frontEnd(
        create({1, arguments, resourceFolder, name, "", ZPKPackageLayout::icon(resourceFolder), frameworks,
                nullptr}));
    if (!frontEnd) {
        throw std::runtime_error("the windows cannot be shown");
    }
    // A cursor that comes and goes would be in one picture and not in the next.
    QApplication::setCursorFlashTime(0);
    if (look.palette == Palette::Dark) {
        QApplication::setPalette(darkPalette());
    }
    return frontEnd;
}
