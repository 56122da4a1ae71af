// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QTimer>
#include <QWidget>

/// A small wheel of dots that turns while work goes on, of the height of a line. It stands still where the
/// person has asked for that. Main thread only.
class ZPKBusyMark : public QWidget {
public:
    explicit ZPKBusyMark(QWidget* parent);

    void start();
    void stop() { m_timer.stop(); }

    QSize sizeHint() const override;

private:
    void paintEvent(QPaintEvent* event) override;
    void turn();

    QTimer m_timer;
    int m_step = 0;
};
