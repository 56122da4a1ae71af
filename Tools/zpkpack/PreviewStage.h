// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace zpk_packager {

struct PreviewOptions;

/// What pictures of a package's windows are made of: a folder in the shape of a bundle with the package's
/// name, forms and texts, and its description files. Nothing of a package is run for it. Operations throw
/// `PackagerFailure`.
class PreviewStage {
public:
    /// Makes the stage as `stage` in `workFolder`, which nobody else may write to. Changes the environment of
    /// the process.
    PreviewStage(const PreviewOptions& options, const std::string& workFolder);

    const std::string& path() const { return m_path; }

    /// Codes of the languages that the package offers, in its own order. One that is no plain name of a
    /// folder is left out.
    std::vector<std::string> languages() const;

private:
    void fillFromSource(const PreviewOptions& options) const;
    void fillFromPackage(const std::string& package, const std::string& workFolder) const;

    std::string m_path;
};

}  // namespace zpk_packager
