// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKToolkitEnvironment.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>

#include "Base/ZPKEnvironment.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKPath.h"
#include "Package/ZPKCarriedParts.h"
#include "Platform/ZPKFileManager.h"
#include "Platform/ZPKStandardFolders.h"

namespace {

constexpr const char* kRuntimeFolder = "XDG_RUNTIME_DIR";
constexpr const char* kCompositor = "WAYLAND_DISPLAY";
constexpr const char* kBus = "DBUS_SESSION_BUS_ADDRESS";
constexpr const char* kMachinesKeyboardData = "/usr/share/X11/xkb";

constexpr mode_t kAllPermissions = 07777;

constexpr std::string_view kForeignPrefixes[] = {"QT_", "FONTCONFIG_", "XKB_CONFIG_", "G_"};

/// Where the C library and libX11 find things that they load or take for their own.
constexpr std::string_view kForeignNames[] = {"FC_DEBUG", "GCONV_PATH", "LOCPATH", "XLOCALEDIR"};

constexpr std::string_view kWanted[] = {"QT_ACCESSIBILITY",
                                        "QT_ENABLE_HIGHDPI_SCALING",
                                        "QT_FONT_DPI",
                                        "QT_LINUX_ACCESSIBILITY_ALWAYS_ON",
                                        "QT_QPA_PLATFORM",
                                        "QT_SCALE_FACTOR",
                                        "QT_SCALE_FACTOR_ROUNDING_POLICY",
                                        "QT_SCREEN_SCALE_FACTORS",
                                        "QT_USE_PHYSICAL_DPI",
                                        "QT_WAYLAND_DISABLE_WINDOWDECORATION"};

void set(const char* variable, const std::string& value) {
    ::setenv(variable, value.c_str(), 1);
}

/// The toolkit takes no other folder, and makes one of its own instead.
bool isRuntimeFolder(const std::string& path) {
    struct stat attributes;
    return ::lstat(path.c_str(), &attributes) == 0 && S_ISDIR(attributes.st_mode) &&
           attributes.st_uid == ::geteuid() && (attributes.st_mode & kAllPermissions) == S_IRWXU;
}

/// A folder of the person's own that has no name any more: nothing can be made in it, and nothing of it
/// stays, however the process ends.
ZPKFileDescriptor makeNamelessFolder() {
    const std::optional<std::string> temporary = ZPKStandardFolders::temporaryFolder();
    std::string path = ZPKPath::join(temporary.value_or("/tmp"), "zephyrkit-XXXXXX");
    if (::mkdtemp(path.data()) == nullptr) {
        return {};
    }
    ZPKFileDescriptor folder(::open(path.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    ::rmdir(path.c_str());
    return folder;
}

void provideRuntimeFolder() {
    static ZPKFileDescriptor nameless;
    const std::optional<std::string> given = ZPKEnvironment::value(kRuntimeFolder);
    if (given && isRuntimeFolder(*given)) {
        return;
    }
    nameless = makeNamelessFolder();
    if (!nameless.isOpen()) {
        return;
    }
    // The compositor's socket is still where it was.
    const std::optional<std::string> compositor = ZPKEnvironment::value(kCompositor);
    if (given && compositor && compositor->front() != '/') {
        set(kCompositor, ZPKPath::join(*given, *compositor));
    }
    // The last component makes it a folder to whoever does not follow links.
    set(kRuntimeFolder, "/proc/self/fd/" + std::to_string(nameless.get()) + "/.");
}

/// Any bytes, in the form that an address has.
std::string addressOf(const std::string& path) {
    constexpr char kDigits[] = "0123456789abcdef";
    constexpr std::string_view kPlain = "/.-_";
    std::string address = "unix:path=";
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isLetterOrDigit =
            (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
        if (isLetterOrDigit || kPlain.find(character) != std::string_view::npos) {
            address += character;
        } else {
            address += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
        }
    }
    return address;
}

void lookForNoOtherBus() {
    if (ZPKEnvironment::isSet(kBus)) {
        return;
    }
    // Where there is none, the connection is refused.
    set(kBus, addressOf(ZPKPath::join(ZPKEnvironment::value(kRuntimeFolder).value_or("/proc/self"), "bus")));
}

}  // namespace

void ZPKToolkitEnvironment::set(const ZPKCarriedParts& parts) {
    ZPKEnvironment::remove(isForAnotherToolkit);
    ::set("FONTCONFIG_FILE", parts.folder() + "/fonts/fonts.conf");
    if (!ZPKFileManager::isFolder(kMachinesKeyboardData)) {
        ::set("XKB_CONFIG_ROOT", parts.folder() + "/xkb");
    }
    lookForNoOtherBus();
    provideRuntimeFolder();
}

bool ZPKToolkitEnvironment::isForAnotherToolkit(std::string_view name) {
    const auto begins = [&](std::string_view prefix) { return name.starts_with(prefix); };
    return (std::ranges::any_of(kForeignPrefixes, begins) ||
            std::ranges::find(kForeignNames, name) != std::end(kForeignNames)) &&
           std::ranges::find(kWanted, name) == std::end(kWanted);
}
