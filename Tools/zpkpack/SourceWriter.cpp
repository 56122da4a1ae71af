// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/SourceWriter.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFileDescriptor.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/QuotedText.h"

namespace zpk_packager {

namespace {

constexpr mode_t kFolderMode = 0777;

}  // namespace

void SourceWriter::makeFolder(const std::string& path) {
    if (::mkdir(path.c_str(), kFolderMode) != 0) {
        throw PackagerFailure::ofSystem(path, errno);
    }
}

void SourceWriter::writeFile(const std::string& path, const std::string& contents, unsigned int mode) {
    ZPKFileDescriptor file(ZPKDescriptorIO::retry(
        [&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode); }));
    if (!file.isOpen() || !ZPKDescriptorIO::writeWhole(file.get(), contents) ||
        ::fchmod(file.get(), mode) != 0 || !file.close()) {
        throw PackagerFailure::ofSystem(path, errno);
    }
}

std::string SourceWriter::packageStrings(const PackageDescription& description) {
    std::string text =
        "/* The name of the bundle. Launchers of one name never run at the same time. */\n"
        "\"CFBundleName\" = " +
        QuotedText::of(description.bundleName) +
        ";\n\n"
        "/* The same as the last part of a domain of yours, written backwards. */\n"
        "\"CFBundleIdentifier\" = " +
        QuotedText::of(description.bundleIdentifier) + ";\n";
    if (!description.displayName.empty()) {
        text +=
            "\n/* What people read in the windows, the menu and the file manager, in any words. Their "
            "picture is\n"
            "   Icon.png, best of 256 by 256 points, or Icon.svg beside this file. */\n"
            "\"CFBundleDisplayName\" = " +
            QuotedText::of(description.displayName) + ";\n";
    }
    return text;
}

}  // namespace zpk_packager
