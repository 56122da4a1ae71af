// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QProgressBar>

/// Has a bar that fills from the right drawn as the mirror image of one that fills from the left: the
/// toolkit's own drawing of it has no outline at its ends. Belongs to the bar. Main thread only.
class ZPKMirroredBar : public QObject {
public:
    explicit ZPKMirroredBar(QProgressBar& bar);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    QProgressBar& m_bar;
};
