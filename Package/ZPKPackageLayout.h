// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// What a package's source folder, the bundle that is built from it and the staging folder of a run
/// hold, and under which names: the one place that knows them. Mere text; may be used from any thread.
///
///     source            resource folder      staging folder
///     Package.strings
///     Info/             Info.datx            Info.dat, then Info/Condition.xml, Info/Startup.xml
///     Data/             Data.datx            Data.dat, then Data/
///     UILang/           UILang/Languages.xml
///     Icon.png          Icon.png
///     Icon.svg          Icon.png
class ZPKPackageLayout {
public:
    ZPKPackageLayout() = delete;

    /// The two folders of a package that become archives.
    enum class Content {
        /// The description: conditions and start-up.
        Info,
        /// The payload.
        Data,
    };

    /// The folder's own name, which its archive keeps: "Info" or "Data".
    static const char* name(Content content);

    /// The folder in a source or a staging folder.
    static std::string folder(const std::string& parent, Content content);

    /// The plain archive, "Info.dat" or "Data.dat": in the staging folder, and while it is packed.
    static std::string plainArchive(const std::string& parent, Content content);

    /// The scrambled archive in the resource folder, "Info.datx" or "Data.datx".
    static std::string scrambledArchive(const std::string& resourceFolder, Content content);

    /// "Info/Condition.xml" in a source or a staging folder.
    static std::string conditionDescription(const std::string& parent);

    /// "Info/Startup.xml" in a source or a staging folder.
    static std::string startupDescription(const std::string& parent);

    /// The folder of the interface's languages in a source or a resource folder.
    static std::string languageFolder(const std::string& parent);

    /// "Languages.xml" in the language folder of a source or a resource folder.
    static std::string languageList(const std::string& parent);

    /// "InfoPlist.strings" of a language in the language folder of a source or a resource folder: what the
    /// package is called in that language.
    static std::string languageNames(const std::string& parent, const std::string& language);

    /// The picture of the package in a source or a resource folder.
    static std::string icon(const std::string& parent);

    /// The drawing in a source of which that picture is made.
    static std::string drawing(const std::string& sourceFolder);

    /// The names of the package, "Package.strings" in a source folder.
    static std::string packageStrings(const std::string& sourceFolder);

    /// The staging folder in the folder for temporary files. One name for all launchers.
    static std::string stagingFolder(const std::string& temporaryFolder);

    /// The name of the archive tool among a bundle's helpers.
    static constexpr const char* kArchiveTool = "ditto";

    /// Stands in a start-up description for the full path of the payload folder.
    static constexpr const char* kDataFolderToken = "$Data$";

    static constexpr const char* kLanguageFolderName = "UILang";
};
