// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zpk_packager {

class MadePackage;
class Progress;

/// The files of a bundle and their SHA-256 sums, in the order of their paths. It finds what has changed, not
/// who changed it; links have no sum. A value.
class Manifest {
public:
    /// Where it lies in the bundle; it does not list itself.
    static constexpr const char* kPath = "Contents/Resources/Manifest.sha256";

    struct Entry {
        std::string path;
        /// 64 hexadecimal digits in lower case.
        std::string sum;
    };

    struct Difference {
        enum class Kind { Added, Changed, Missing };
        Kind kind;
        std::string path;
    };

    /// Reads all files of the package, which `progress`, if it is given, shows. Throws `PackagerFailure`.
    static Manifest ofPackage(MadePackage& package, Progress* progress = nullptr);

    /// The one that lies in the package. Throws `PackagerFailure` when there is none or it is damaged.
    static Manifest inPackage(MadePackage& package);

    /// Puts the manifest of a bundle on disk into it, in the place of one that is there. Throws
    /// `PackagerFailure`.
    static void write(const std::string& bundle, Progress* progress = nullptr);

    const std::vector<Entry>& entries() const { return m_entries; }

    /// What is different in `found`, by path.
    std::vector<Difference> differencesTo(const Manifest& found) const;

    /// A line for each file, as `sha256sum --check` reads it in the bundle's folder.
    std::string text() const;

private:
    void addLine(std::string_view line, const std::string& name);

    std::vector<Entry> m_entries;
};

}  // namespace zpk_packager
