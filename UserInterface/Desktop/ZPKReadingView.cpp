// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKReadingView.h"

#include <QEvent>
#include <QFontMetrics>
#include <QScrollBar>
#include <QStringList>
#include <QStyle>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextOption>
#include <cmath>

namespace {

constexpr QChar kFirstStrongIsolate(0x2068);
constexpr QChar kPopDirectionalIsolate(0x2069);

/// What a widget that fits its lines exactly would scroll by.
constexpr int kRoundingHeight = 2;

}  // namespace

ZPKReadingView::ZPKReadingView(QPlainTextEdit& widget)
    : QObject(&widget), m_widget(widget), m_frame(new QFocusFrame(&widget)) {
    m_widget.setReadOnly(true);
    m_widget.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_widget.setTabChangesFocus(true);
    m_widget.setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_widget.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QPalette palette = m_widget.palette();
    palette.setColor(QPalette::WindowText, palette.color(QPalette::Active, QPalette::Highlight));
    m_frame->setPalette(palette);
    m_widget.installEventFilter(this);
}

void ZPKReadingView::setText(const QString& text) {
    QTextDocument& document = *m_widget.document();
    QTextOption option = document.defaultTextOption();
    option.setAlignment(QStyle::visualAlignment(m_widget.layoutDirection(), Qt::AlignLeft));
    document.setDefaultTextOption(option);
    m_widget.setPlainText(text);
}

int ZPKReadingView::heightForWidth(int width, int mostLines) const {
    const int around =
        static_cast<int>(2 * m_widget.document()->documentMargin()) + 2 * m_widget.frameWidth();
    const int lineWidth = qMax(width - around - m_widget.verticalScrollBar()->sizeHint().width(), 1);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    int lines = 0;
    // A line is as high as the highest of the fonts that its letters need.
    qreal height = 0;
    for (const QString& text : m_widget.toPlainText().split(QLatin1Char('\n'))) {
        QTextLayout layout(text, m_widget.font());
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid() && lines < mostLines; ++lines) {
            line.setLineWidth(lineWidth);
            height += std::ceil(line.height());
            line = layout.createLine();
        }
        layout.endLayout();
    }
    return static_cast<int>(height) + around + kRoundingHeight;
}

int ZPKReadingView::heightOfLines(int lines) const {
    const int around =
        static_cast<int>(2 * m_widget.document()->documentMargin()) + 2 * m_widget.frameWidth();
    return lines * m_widget.fontMetrics().lineSpacing() + around + kRoundingHeight;
}

QString ZPKReadingView::isolatedLines(const QString& lines) {
    QStringList isolated;
    for (const QString& line : lines.split(QLatin1Char('\n'))) {
        isolated += line.isEmpty() ? line : kFirstStrongIsolate + line + kPopDirectionalIsolate;
    }
    return isolated.join(QLatin1Char('\n'));
}

bool ZPKReadingView::eventFilter(QObject* watched, QEvent* event) {
    if (m_frame && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)) {
        m_frame->setWidget(event->type() == QEvent::FocusIn ? &m_widget : nullptr);
    }
    return QObject::eventFilter(watched, event);
}
