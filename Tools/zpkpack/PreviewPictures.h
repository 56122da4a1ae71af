// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zpk_packager {

class Progress;

/// What `zpkpack preview` is told.
struct PreviewOptions {
    /// A package source, a bundle, or one file.
    std::string package;

    /// The bundle with the forms and the texts of a source that has none.
    std::string templatePath;

    /// The program that draws the windows.
    std::string programPath;

    /// The program that makes a picture of a drawing.
    std::string drawProgramPath;

    /// The codes of the languages to show; all that the package offers, unless told.
    std::vector<std::string> languages;

    /// Pixels for one of the units in which windows are measured.
    int scale = 1;

    bool isDark = false;
};

/// Makes pictures of everything that a package's launcher can show, a folder a language, and a page over
/// them. Nothing of the package is run. Operations throw `PackagerFailure`.
class PreviewPictures {
public:
    /// Both outlive the object; `progress`, if it is given, shows the drawing.
    explicit PreviewPictures(const PreviewOptions& options, Progress* progress = nullptr)
        : m_options(options), m_progress(progress) {}

    /// Makes the folder `made`; other new things are written in `workFolder`. Changes the environment of
    /// the process.
    void make(const std::string& workFolder, const std::string& made) const;

    /// What was made, by its path in `folder`, in the order of the page.
    static std::vector<std::string> filesIn(const std::string& folder);

private:
    std::vector<std::string> chosenAmong(const std::vector<std::string>& offered) const;
    void draw(const std::string& stage, const std::string& language, const std::string& folder) const;

    const PreviewOptions& m_options;
    Progress* m_progress;
};

}  // namespace zpk_packager
