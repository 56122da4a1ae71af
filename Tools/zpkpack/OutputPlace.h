// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace zpk_packager {

/// The path at which the package is to appear: a bundle, `NAME.app`, or one file, `NAME.run`.
class OutputPlace {
public:
    /// `path` may end in separators. `replace` lets go what is there.
    OutputPlace(const std::string& path, bool replace);

    /// A place where nothing is ever replaced.
    explicit OutputPlace(const std::string& path);

    const std::string& path() const { return m_path; }

    /// What is wrong with a name for a package; nothing when it ends as one does.
    static std::string faultOfName(const std::string& path);

    /// Whether the package is to be one file.
    bool isRunFile() const;

    /// The name of the bundle: that of the output, or the one that the one file places.
    std::string bundleName() const;

    /// Refuses a place that is taken, or one that meets what the bundle is made of: replacing the
    /// output must not delete that, and a folder that is packed must not grow by its own package.
    /// Throws `PackagerFailure`.
    void check(const std::string& sourceFolder, const std::vector<std::string>& copiedFolders) const;

    /// Refuses a place that is taken, unless what is there may be replaced. Throws `PackagerFailure`.
    void checkFree() const;

    /// Gives the package at `made`, which lies on the same file system, its place. What was there is
    /// then at `made` or beside it, the caller's to remove. Throws `PackagerFailure`, and then what was
    /// there stays.
    void put(const std::string& made) const;

private:
    bool isTaken() const;
    void checkOutside(const std::string& folder, const std::string& why) const;
    void putInFreePlace(const std::string& made) const;
    void exchange(const std::string& made) const;

    std::string m_path;
    bool m_replace;
    bool m_isReplaceable;
};

}  // namespace zpk_packager
