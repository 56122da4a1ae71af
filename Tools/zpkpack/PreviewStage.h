// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace zpk_packager {

/// What pictures of a package's windows are made of: a folder in the shape of a bundle with the package's
/// name, forms and texts, and its description files. Nothing of a package is run for it. Operations throw
/// `PackagerFailure`.
class PreviewStage {
public:
    /// Makes the stage as `stage` in `workFolder`, which nobody else may write to. `package` is a package
    /// source, a bundle or one file. `templatePath` is the launcher template, which has the forms of a
    /// source, and the texts of one without its own.
    PreviewStage(const std::string& package, const std::string& templatePath, const std::string& workFolder);

    const std::string& path() const { return m_path; }

    /// Codes of the languages that the package offers, in its own order. One that is no plain name of a
    /// folder is left out.
    std::vector<std::string> languages() const;

private:
    void fillFromSource(const std::string& source, const std::string& templatePath) const;
    void fillFromPackage(const std::string& package, const std::string& workFolder) const;

    std::string m_path;
};

}  // namespace zpk_packager
