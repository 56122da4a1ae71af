// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QWidget>

/// Looks whether there is a font for what the windows show. Main thread only.
class ZPKFontCheck {
public:
    ZPKFontCheck() = delete;

    /// For each script of which no font has a letter that is in the window's texts, and that was not told
    /// before, a line on standard error.
    static void check(const QWidget& window);
};
