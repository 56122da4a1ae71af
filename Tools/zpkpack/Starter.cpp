// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Starter.h"

#include <string_view>
#include <vector>

#include "Base/ZPKPath.h"
#include "Package/ZPKPackageLayout.h"
#include "Package/ZPKPackageTitle.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKFileManager.h"
#include "Tools/zpkpack/Check/PackageStrings.h"
#include "Tools/zpkpack/PackagerFailure.h"
#include "Tools/zpkpack/SourceWriter.h"

namespace zpk_packager {

namespace {

/// File managers take this, and some of them the first line as well, for a sign that the entry may be
/// started.
constexpr unsigned int kMode = 0755;

/// A manager says where the entry lies by a path, perhaps only its folder's, which it may have cut at its
/// blanks, by an address with percent signs for some bytes, in the environment, or not at all; then it may
/// have made the entry's folder the working folder. Paths are cut and read by what the shell itself can do,
/// since a command's output loses line feeds at its end. There is no backslash and no apostrophe in it:
/// managers do not agree on how the former are read in an entry, but all of them take what stands between
/// apostrophes as it is.
constexpr std::string_view kScript =
    R"sh(p=$*; case $p in file:*) r=${p#file:}; r=${r#//localhost}; r=${r#//}; p=; )sh"
    R"sh(while :; do case $r in *%*) ;; *) break ;; esac; )sh"
    R"sh(p=$p${r%%%*}; r=${r#*%}; e=${r#??}; )sh"
    R"sh(p=$p$(LC_ALL=C awk -v f=%cx "BEGIN { printf f, $((0x${r%"$e"})) }"); )sh"
    R"sh(p=${p%x}; r=$e; done; p=$p$r ;; esac; )sh"
    R"sh(for p in "$p" "$p/x" "$(readlink -f "$p"; echo x)" "$GIO_LAUNCHED_DESKTOP_FILE" ./x; do )sh"
    R"sh(d=${p%/*}/Contents/Linux/Zephyrkit; [ -x "$d" ] && exec "$d"; done; exit 127)sh";

/// One argument of a command, as an entry has it: a percent sign is the mark of a field.
std::string argument(std::string_view text) {
    std::string quoted;
    for (const char each : text) {
        quoted += each == '%' ? "%%" : std::string(1, each);
    }
    return "'" + quoted + "'";
}

/// A text as the value of a key.
std::string value(const std::string& text) {
    std::string escaped;
    for (const char each : text) {
        escaped += each == '\\' ? "\\\\" : std::string(1, each);
    }
    return escaped.starts_with(' ') ? "\\s" + escaped.substr(1) : escaped;
}

bool isCode(const std::string& language) {
    constexpr std::string_view kLetters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@.-";
    return language.find_first_not_of(kLetters) == std::string::npos;
}

/// In the languages that call the package otherwise.
std::string namesInLanguages(const ZPKBundle& bundle, const std::string& plainName) {
    const std::string folder = ZPKPackageLayout::languageFolder(bundle.resourcePath());
    std::vector<std::string> languages;
    if (ZPKFileManager::isFolder(folder)) {
        require(ZPKFileManager::contentsOfFolder(folder, languages));
    }
    std::string lines;
    for (const std::string& language : languages) {
        const std::string name = ZPKPackageTitle::inLanguage(bundle, language);
        if (name != plainName && isCode(language) && PackageStrings::faultOfTitle(name).empty()) {
            lines += "Name[" + language + "]=" + value(name) + "\n";
        }
    }
    return lines;
}

}  // namespace

void Starter::write(const PackageDescription& description, const std::string& bundle) {
    const std::string& name = description.title();
    const std::string text =
        "#!/usr/bin/env xdg-open\n[Desktop Entry]\nType=Application\nName=" + value(name) + "\n" +
        namesInLanguages(ZPKBundle::bundleWithoutDescription(bundle), name) +
        "Icon=system-software-install\nExec=sh -c " + argument(kScript) +
        " sh %k\nTerminal=false\nStartupNotify=true\nStartupWMClass=" + value(description.bundleIdentifier) +
        "\n";
    const std::string path = ZPKPath::join(bundle, Starter::path(description.bundleName));
    // The template may hold something of the name.
    ZPKFileManager::removeItem(path).ignore();
    SourceWriter::writeFile(path, text, kMode);
}

}  // namespace zpk_packager
