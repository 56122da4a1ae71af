// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>

#include "UserInterface/ZPKFrontEnd.h"

/// The launcher's own windows on a screen that nobody sees. Main thread only, once in a process.
class OffscreenDesktop {
public:
    OffscreenDesktop() = delete;

    enum class Palette { Light, Dark };

    struct Look {
        /// Pixels for one of the toolkit's units.
        int scale = 1;
        Palette palette = Palette::Light;
    };

    /// Opens the windows' module of the launcher template beside this program, with forms from
    /// `resourceFolder`. What the environment says of screens, languages and toolkits is replaced. Throws
    /// `std::runtime_error`.
    static std::unique_ptr<ZPKFrontEnd> open(const std::string& resourceFolder, const std::string& name,
                                             const std::string& language, const Look& look);
};
