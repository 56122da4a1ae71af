// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDialog>
#include <QString>

#include "UserInterface/ZPKFrontEnd.h"

/// The window of an alert: a picture of its style, its texts, and one button, which Return and Escape press.
class ZPKDesktopAlert : public QDialog {
public:
    ZPKDesktopAlert(const ZPKAlert& alert, const QString& windowTitle, QWidget* parent);

private:
    void showEvent(QShowEvent* event) override;
};
