// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKMirroredBar.h"

#include <QEvent>
#include <QImage>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionProgressBar>

namespace {

/// Lets others fill an option with what a bar shows.
class ShownBar : public QProgressBar {
public:
    using QProgressBar::initStyleOption;
};

}  // namespace

ZPKMirroredBar::ZPKMirroredBar(QProgressBar& bar) : QObject(&bar), m_bar(bar) {
    bar.installEventFilter(this);
}

bool ZPKMirroredBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Paint || !m_bar.isRightToLeft()) {
        return QObject::eventFilter(watched, event);
    }
    QStyleOptionProgressBar shown;
    (m_bar.*&ShownBar::initStyleOption)(&shown);
    shown.direction = Qt::LeftToRight;
    // Not by a mirrored painter: the style clips between two points, which is another point then.
    QImage image(m_bar.size() * m_bar.devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(m_bar.devicePixelRatioF());
    image.fill(Qt::transparent);
    QPainter painter(&image);
    m_bar.style()->drawControl(QStyle::CE_ProgressBar, &shown, &painter, &m_bar);
    painter.end();
    QPainter(&m_bar).drawImage(QPoint(), image.mirrored(true, false));
    return true;
}
