// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLabel>
#include <QMessageBox>
#include <QString>

#include "UserInterface/ZPKFrontEnd.h"

/// The box of an alert: its texts as they stand, never read as markup, and scrolled when they do not
/// fit the screen; one button, which Return and Escape press.
class ZPKDesktopAlert : public QMessageBox {
public:
    ZPKDesktopAlert(const ZPKAlert& alert, const QString& windowTitle, QWidget* parent);

private:
    void scrollLongText(QLabel& label, double shareOfHeight);
};
