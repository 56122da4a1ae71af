// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <string>

inline QString ZPKDesktopText(const std::string& text) {
    return QString::fromStdString(text);
}

/// A title for a button or a menu item, where "&" would mark a key.
inline QString ZPKDesktopLabel(const std::string& text) {
    return ZPKDesktopText(text).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

/// A title for a window, where "[*]" would stand for a mark that the window has changes.
inline QString ZPKDesktopWindowTitle(const std::string& text) {
    return ZPKDesktopText(text).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}
