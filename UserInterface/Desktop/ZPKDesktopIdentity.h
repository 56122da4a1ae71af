// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// What the desktop and people know the application by. Main thread only, while the toolkit's application
/// object is there.
class ZPKDesktopIdentity {
public:
    ZPKDesktopIdentity() = delete;

    /// Before the first window: all windows get `identifier` as their class on X11 and as their application
    /// on Wayland, which is how a desktop finds the starter that they belong to. Without one it is the
    /// program's name.
    static void take(const std::string& identifier);

    /// What the package is called in headings, titles and menus.
    static std::string displayName();
};
