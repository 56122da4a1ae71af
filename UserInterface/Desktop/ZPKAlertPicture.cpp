// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKAlertPicture.h"

#include <QIcon>
#include <QPainter>
#include <QPolygonF>
#include <QStyle>

namespace {

// All is drawn on a field of 32 by 32.
constexpr qreal kField = 32;
constexpr qreal kRadius = 13;
constexpr qreal kStroke = 3;
constexpr qreal kDot = 2;

void drawCritical(QPainter& painter) {
    painter.setBrush(QColor(229, 57, 53));
    painter.drawEllipse(QPointF(16, 16), kRadius, kRadius);
    painter.setPen(QPen(Qt::white, kStroke, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(11, 11), QPointF(21, 21));
    painter.drawLine(QPointF(21, 11), QPointF(11, 21));
}

void drawWarning(QPainter& painter) {
    constexpr QColor kAmber(242, 161, 0);
    constexpr QColor kDark(58, 38, 0);
    painter.setBrush(kAmber);
    painter.setPen(QPen(kAmber, kStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolygon(QPolygonF({{16, 5}, {28, 27}, {4, 27}}));
    painter.setPen(QPen(kDark, kStroke, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(16, 12), QPointF(16, 18));
    painter.setPen(Qt::NoPen);
    painter.setBrush(kDark);
    painter.drawEllipse(QPointF(16, 23.5), kDot, kDot);
}

void drawInformational(QPainter& painter) {
    painter.setBrush(QColor(38, 110, 180));
    painter.drawEllipse(QPointF(16, 16), kRadius, kRadius);
    painter.setPen(QPen(Qt::white, kStroke, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(16, 15), QPointF(16, 23));
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(16, 9), kDot, kDot);
}

struct Picture {
    const char* themedName;
    void (*draw)(QPainter& painter);
};

Picture pictureOf(ZPKAlertStyle style) {
    switch (style) {
        case ZPKAlertStyle::Warning:
            return {"dialog-warning", &drawWarning};
        case ZPKAlertStyle::Informational:
            return {"dialog-information", &drawInformational};
        case ZPKAlertStyle::Critical:
            break;
    }
    return {"dialog-error", &drawCritical};
}

}  // namespace

QPixmap ZPKAlertPicture::ofStyle(ZPKAlertStyle style, const QWidget& window) {
    const Picture picture = pictureOf(style);
    const int side = window.style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &window);
    const QIcon themed = QIcon::fromTheme(QLatin1String(picture.themedName));
    if (!themed.availableSizes().isEmpty()) {
        return themed.pixmap(side);
    }
    const qreal scale = window.devicePixelRatioF();
    QPixmap drawn(QSize(side, side) * scale);
    drawn.setDevicePixelRatio(scale);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.scale(side / kField, side / kField);
    picture.draw(painter);
    return drawn;
}
