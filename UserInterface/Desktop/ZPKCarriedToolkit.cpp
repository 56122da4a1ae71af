// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKCarriedToolkit.h"

#include <dlfcn.h>

#include <QCoreApplication>
#include <QFontDatabase>
#include <QSet>
#include <QtPlugin>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "Base/ZPKEnvironment.h"
#include "Base/ZPKPath.h"
#include "Base/ZPKRegularFile.h"

namespace {

constexpr std::size_t kLargestFont = std::size_t{16} << 20;

/// The plug-ins, by their paths in the folder.
std::vector<std::string> plugInsIn(const std::string& folder) {
    namespace fs = std::filesystem;
    std::vector<std::string> paths;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".so") {
            paths.push_back(entry->path().lexically_relative(folder).native());
        }
    }
    return paths;
}

bool isPlatformNamed(std::string_view name) {
    return ZPKEnvironment::value("QT_QPA_PLATFORM").value_or("").find(name) != std::string::npos;
}

/// Each kind of display brings libraries of its own, which take time to open.
bool isOfUse(const std::string& plugIn) {
    if (plugIn.find("wayland") != std::string::npos) {
        return ZPKEnvironment::isSet("WAYLAND_DISPLAY") || ZPKEnvironment::isSet("WAYLAND_SOCKET") ||
               isPlatformNamed("wayland");
    }
    if (plugIn.find("xcb") != std::string::npos) {
        return ZPKEnvironment::isSet("DISPLAY") || isPlatformNamed("xcb");
    }
    return true;
}

/// `path` begins where this module lies: there a dollar sign is no mark to the loader.
void registerPlugIn(const std::string& path) {
    void* const library = ::dlopen(("$ORIGIN/" + path).c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) {
        return;
    }
    const auto instance = reinterpret_cast<QtPluginInstanceFunction>(::dlsym(library, "qt_plugin_instance"));
    const auto description =
        reinterpret_cast<QtPluginMetaDataFunction>(::dlsym(library, "qt_plugin_query_metadata_v2"));
    if (instance != nullptr && description != nullptr) {
        qRegisterStaticPluginFunction(QStaticPlugin(instance, description));
    }
}

/// Names that stand for whatever font there is.
bool isGeneric(const QString& family) {
    static const QSet<QString> kGeneric{QStringLiteral("Monospace"), QStringLiteral("Sans Serif"),
                                        QStringLiteral("Serif")};
    return kGeneric.contains(family);
}

}  // namespace

void ZPKCarriedToolkit::usePlugIns(const std::string& frameworks) {
    // The toolkit knows files by texts, and a folder's name may be none. Handed over as if they were part
    // of the program, its plug-ins are not looked for in any folder.
    QCoreApplication::setLibraryPaths({});
    const std::string folder = ZPKPath::join(frameworks, "plugins");
    for (const std::string& plugIn : plugInsIn(folder)) {
        // What is no file would be waited for, or read for ever.
        if (isOfUse(plugIn) && ZPKRegularFile::open(ZPKPath::join(folder, plugIn)).isOpen()) {
            registerPlugIn("../Frameworks/plugins/" + plugIn);
        }
    }
}

void ZPKCarriedToolkit::useFontWhereThereIsNone(const std::string& frameworks) {
    const QStringList families = QFontDatabase::families();
    if (!std::ranges::all_of(families, isGeneric)) {
        return;
    }
    const std::optional<std::string> font =
        ZPKRegularFile::contents(ZPKPath::join(frameworks, "fonts/DejaVuSans.ttf"), kLargestFont);
    if (font) {
        QFontDatabase::addApplicationFontFromData(QByteArray::fromStdString(*font));
    }
}
