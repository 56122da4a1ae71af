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
    showScrollBarIfNeeded();
}

int ZPKReadingView::heightForWidth(int width, int mostLines) const {
    Lines lines = fold(width - around(), mostLines);
    if (lines.areMore) {
        // Those have the scroll bar beside them.
        lines = fold(width - around() - m_widget.verticalScrollBar()->sizeHint().width(), mostLines);
    }
    return lines.height + around() + kRoundingHeight;
}

int ZPKReadingView::heightOfLines(int lines) const {
    return lines * m_widget.fontMetrics().lineSpacing() + around() + kRoundingHeight;
}

int ZPKReadingView::around() const {
    return static_cast<int>(2 * m_widget.document()->documentMargin()) + 2 * m_widget.frameWidth();
}

ZPKReadingView::Lines ZPKReadingView::fold(int width, int mostLines) const {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    Lines lines;
    int count = 0;
    for (const QString& text : m_widget.toPlainText().split(QLatin1Char('\n'))) {
        QTextLayout layout(text, m_widget.font());
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            if (++count > mostLines) {
                lines.areMore = true;
                return lines;
            }
            // As the widget does. A line is as high as the highest of the fonts that its letters need.
            line.setLeadingIncluded(true);
            line.setLineWidth(qMax(width, 1));
            lines.height += static_cast<int>(std::ceil(line.height()));
        }
        layout.endLayout();
    }
    return lines;
}

void ZPKReadingView::showScrollBarIfNeeded() {
    const Lines all = fold(m_widget.width() - around(), m_widget.height());
    const bool fits = !all.areMore && all.height + around() <= m_widget.height();
    m_widget.setVerticalScrollBarPolicy(fits ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
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
    if (event->type() == QEvent::Resize) {
        showScrollBarIfNeeded();
    }
    return QObject::eventFilter(watched, event);
}
