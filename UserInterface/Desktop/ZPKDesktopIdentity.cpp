// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopIdentity.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QWindow>

#include "UserInterface/Desktop/ZPKDesktopText.h"

void ZPKDesktopIdentity::take(const std::string& identifier) {
    if (identifier.empty()) {
        return;
    }
    QGuiApplication::setDesktopFileName(ZPKDesktopText(identifier));
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        // The toolkit asks for the class at the first window and keeps it: from then on the application may
        // have the name that assistive tools read out.
        QCoreApplication::setApplicationName(ZPKDesktopText(identifier));
        QWindow window;
        window.create();
    }
}

std::string ZPKDesktopIdentity::displayName() {
    return QCoreApplication::applicationName().toStdString();
}
