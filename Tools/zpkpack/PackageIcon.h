// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>

namespace zpk_packager {

/// What a package source brings for the picture of its windows: a picture, or else a drawing of which one is
/// made. Operations throw `PackagerFailure`.
class PackageIcon {
public:
    /// `drawProgram` is the program that makes a picture of a drawing.
    PackageIcon(std::string sourceFolder, std::string drawProgram)
        : m_source(std::move(sourceFolder)), m_drawProgram(std::move(drawProgram)) {}

    /// Whether the picture can be had, as far as that is seen at once.
    void check() const;

    /// Gives the picture to the bundle that has `resourceFolder`, where the source has one. Changes the
    /// environment of the process.
    void putInto(const std::string& resourceFolder) const;

private:
    bool hasPicture() const;
    bool hasDrawing() const;
    std::string pictureInSource() const;
    void draw(const std::string& picture) const;

    std::string m_source;
    std::string m_drawProgram;
};

}  // namespace zpk_packager
