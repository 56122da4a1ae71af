// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QPixmap>
#include <QWidget>

#include "UserInterface/ZPKFrontEnd.h"

/// The picture beside an alert: the desktop's own, or one that is drawn, and so sharp at every scale. Main
/// thread only.
class ZPKAlertPicture {
public:
    ZPKAlertPicture() = delete;

    /// For the screen of `window`.
    static QPixmap ofStyle(ZPKAlertStyle style, const QWidget& window);
};
