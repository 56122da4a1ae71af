// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace zpk_packager {

/// The page over the pictures of a package's windows.
class PreviewPage {
public:
    PreviewPage() = delete;

    /// The page in HTML. `name` is the package's, any bytes; `pictures` are paths from the page's own folder
    /// on, each in the folder of one of `languages`; both are plain names. `scale` is how many pixels of a
    /// picture stand for one of the page.
    static std::string html(const std::string& name, const std::vector<std::string>& languages,
                            const std::vector<std::string>& pictures, int scale);
};

}  // namespace zpk_packager
