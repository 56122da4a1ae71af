// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace zpk_run {

/// A small window with a message, for a person who opened the file from a file manager and sees no terminal.
/// It speaks to the X server of this machine itself, in the font that every server has: what the windows need
/// lies in the very file that may be damaged, or does not fit on the disk.
class ErrorWindow {
public:
    ErrorWindow() = delete;

    /// Shows `text`, one line of printable characters, until the person closes the window. Comes back at once
    /// where there is no display to be had; whoever calls has said the same on the terminal.
    static void show(const std::string& title, const std::string& text);
};

}  // namespace zpk_run
