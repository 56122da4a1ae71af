// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDialog>
#include <QString>

/// Tells what runs: the product's name and picture, and the launcher's version. Return, Space, Escape and the
/// close box close it. Main thread only.
class ZPKAboutBox : public QDialog {
public:
    ZPKAboutBox(const QString& title, QWidget* parent);
};
