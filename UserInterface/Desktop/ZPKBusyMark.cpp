// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKBusyMark.h"

#include <QPainter>

#include "UserInterface/Desktop/ZPKReducedMotion.h"

namespace {

constexpr int kDots = 8;
constexpr int kStepMilliseconds = 100;
constexpr int kFullTurn = 360;
/// Shares of the wheel's width.
constexpr qreal kDotRadius = 0.09;
constexpr qreal kWheelRadius = 0.38;
constexpr qreal kFaintestDot = 0.2;

}  // namespace

ZPKBusyMark::ZPKBusyMark(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_timer.setInterval(kStepMilliseconds);
    QObject::connect(&m_timer, &QTimer::timeout, this, [this] { turn(); });
}

void ZPKBusyMark::start() {
    m_timer.start();
}

QSize ZPKBusyMark::sizeHint() const {
    const int height = fontMetrics().height();
    return {height, height};
}

void ZPKBusyMark::turn() {
    if (!ZPKReducedMotion::isWished()) {
        m_step = (m_step + 1) % kDots;
        update();
    }
}

void ZPKBusyMark::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::WindowText));
    painter.translate(QRectF(rect()).center());
    const qreal size = qMin(width(), height());
    painter.rotate(static_cast<qreal>(m_step) * kFullTurn / kDots);
    for (int dot = 1; dot <= kDots; ++dot) {
        painter.rotate(static_cast<qreal>(kFullTurn) / kDots);
        painter.setOpacity(kFaintestDot + (1 - kFaintestDot) * dot / kDots);
        painter.drawEllipse(QPointF(0, -size * kWheelRadius), size * kDotRadius, size * kDotRadius);
    }
}
