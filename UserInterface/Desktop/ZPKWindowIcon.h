// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIcon>
#include <string>

/// The picture that stands for the windows on the desktop. Main thread only.
class ZPKWindowIcon {
public:
    ZPKWindowIcon() = delete;

    /// The picture (PNG) at `path`; where there is none that can be shown, the desktop's own for software
    /// that is being installed; else one that is drawn here.
    static QIcon ofPackage(const std::string& path);
};
