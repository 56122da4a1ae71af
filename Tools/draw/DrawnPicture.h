// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// Makes a picture of a drawing. Main thread only.
class DrawnPicture {
public:
    DrawnPicture() = delete;

    /// The drawing (SVG) in the middle of a square with sides of so many points, as a PNG file. The same
    /// bytes on every processor. `prepare` is called before the drawing is looked at, when the one thread
    /// that draws has begun. Throws `std::runtime_error` when a part cannot be drawn, or nothing is seen.
    static std::string ofDrawing(const std::string& drawing, int side, void (*prepare)());
};
