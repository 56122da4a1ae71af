// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

class ZPKFrontEnd;

/// What the launcher gives the desktop module when it opens it. The module keeps its own copies, but
/// for the strings of `argv`.
struct ZPKDesktopParameters {
    int argc = 0;
    char** argv = nullptr;

    /// The folder of the window forms; any bytes, as in every path.
    std::string resourceFolder;

    /// What the package is called in the windows until `ZPKFrontEnd::setDisplayName` says another name.
    std::string displayName;

    /// What the desktop knows the application by: window class, desktop file. Empty for a program that has
    /// none.
    std::string identifier;

    /// The file of the package's own picture; where there is none, the windows have another.
    std::string iconPath;

    /// The folder of the toolkit that the bundle carries; empty where the machine's own is used.
    std::string frameworks;

    /// Called, at most once and on the main thread, when the toolkit finds out only while it starts
    /// that it cannot show anything. The toolkit cannot be left alive then, so the call does the
    /// whole run another way, and the process ends with the exit status that it gives.
    int (*runWithoutDesktop)() = nullptr;
};

/// The module's file among the bundle's plug-ins.
inline constexpr const char* kDesktopModuleName = "ZPKDesktop.so";

/// Name and type of the one function that the module exports. It gives a front end that the caller
/// owns and destroys with `delete`, or null when there is no display to show it on. A toolkit that
/// cannot go on later, when its display goes away for instance, ends the process with `exit(1)`, so
/// that functions registered with `atexit` still clean up.
inline constexpr const char* ZPKDesktopEntryName = "ZPKCreateDesktopFrontEnd";
using ZPKDesktopEntry = ZPKFrontEnd* (*)(const ZPKDesktopParameters& parameters);
