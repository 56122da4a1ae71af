// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKScreenFit.h"

#include <QFontMetrics>
#include <QScreen>
#include <QStyle>

namespace {

/// Beside the title, a title bar has room for a few buttons and the window's icon, each as wide as it is
/// high.
constexpr int kTitleBarItems = 5;

/// The style's own is that of a window within a window, and may be low.
constexpr int kLowestTitleBar = 24;

int titleBarHeight(const QWidget& window) {
    return qMax(window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window), kLowestTitleBar);
}

}  // namespace

QSize ZPKScreenFit::largestSize(const QWidget& window) {
    const int frame = titleBarHeight(window);
    return window.screen()->availableGeometry().size() - QSize(frame, frame + frame / 2);
}

QPoint ZPKScreenFit::centeredPosition(const QWidget& window, const QSize& size) {
    const QRect screen = window.screen()->availableGeometry();
    const QSize framed = size + QSize(0, titleBarHeight(window));
    return screen.center() - QRect(QPoint(), framed).center();
}

int ZPKScreenFit::widthOfCharacters(const QWidget& window, int characters) {
    QFont bold = window.font();
    bold.setBold(true);
    const int title =
        QFontMetrics(bold).horizontalAdvance(window.windowTitle()) + kTitleBarItems * titleBarHeight(window);
    const int texts = characters * window.fontMetrics().averageCharWidth();
    return qMin(qMax(title, texts), largestSize(window).width());
}

int ZPKScreenFit::heightOfLines(const QWidget& window, int lines) {
    return lines * window.fontMetrics().lineSpacing();
}
