// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

/// A bundle folder: a folder that holds `Contents/Info.plist`. A value; may be used from any thread.
class ZPKBundle {
public:
    static constexpr const char* kDisplayNameKey = "CFBundleDisplayName";

    /// The bundle at `path`, or nothing when the path is no bundle folder.
    static std::optional<ZPKBundle> bundleWithPath(const std::string& path);

    /// The innermost bundle in whose `Contents` the program file `path` lies, or nothing. Helper tools
    /// (`Contents/Helpers`) are no programs of their bundle.
    static std::optional<ZPKBundle> bundleOfProgram(const std::string& path);

    /// The folder as a bundle, whether or not it holds a description: without one it has neither
    /// identifier nor main program.
    static ZPKBundle bundleWithoutDescription(const std::string& folder) { return ZPKBundle(folder); }

    const std::string& bundlePath() const { return m_path; }

    /// `<bundle>/Contents/Resources`.
    std::string resourcePath() const;

    /// `<bundle>/Contents/Helpers/<name>`; whether it exists is not checked.
    std::string helperPath(const std::string& name) const;

    /// `<bundle>/Contents/Frameworks`, what the bundle carries; whether it exists is not checked.
    std::string frameworksPath() const;

    /// `<bundle>/Contents/PlugIns/<name>`; whether it exists is not checked.
    std::string plugInPath(const std::string& name) const;

    /// Full path of the main program, `Contents/Linux/<CFBundleExecutable>`, or nothing when the
    /// description names none or it is not an executable regular file. A name with a "/" or ".."
    /// names none.
    std::optional<std::string> executablePath() const;

    /// `CFBundleIdentifier`, or an empty text.
    std::string bundleIdentifier() const;

    /// The name that a person sees: `CFBundleName` of the top-level `InfoPlist.strings`, else of
    /// `Info.plist`, else the folder's name without ".app".
    std::string localizedName() const;

    /// `CFBundleDisplayName` of `Info.plist`, what the bundle is called for people in any words; nothing
    /// where there is none or an empty one.
    std::optional<std::string> displayName() const;

    /// `CFBundleName` of the top-level `InfoPlist.strings`, or nothing.
    std::optional<std::string> nameInStrings() const;

private:
    explicit ZPKBundle(std::string path) : m_path(std::move(path)) {}
    std::string infoString(const std::string& key) const;

    std::string m_path;
};
