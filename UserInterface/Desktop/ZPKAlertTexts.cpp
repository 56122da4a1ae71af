// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKAlertTexts.h"

#include <QFontMetrics>
#include <QLabel>
#include <QPlainTextEdit>
#include <QStringList>
#include <QStyle>
#include <algorithm>

#include "UserInterface/Desktop/ZPKReadingView.h"

namespace {

constexpr int kGap = 10;

/// Characters in the longest line.
constexpr int kCharacters = 64;

/// What is higher is scrolled.
constexpr int kMostLinesOfLabel = 8;
constexpr int kMostLinesOfView = 12;
constexpr int kFewestLinesOfView = 3;

/// A text's width is no whole number.
constexpr int kRounding = 2;

/// What the core puts before each line of a list.
const QString& indent() {
    static const QString kIndent = QStringLiteral("  ");
    return kIndent;
}

bool isList(const QString& paragraph) {
    const QStringList lines = paragraph.split(QLatin1Char('\n'));
    return std::ranges::all_of(lines, [](const QString& line) { return line.startsWith(indent()); });
}

QString withoutIndent(const QString& list) {
    QStringList lines;
    for (const QString& line : list.split(QLatin1Char('\n'))) {
        lines += line.mid(indent().size());
    }
    return lines.join(QLatin1Char('\n'));
}

/// Those with something in them. Two that follow each other and are no lists are one where they are shown.
QStringList paragraphsOf(const QString& text) {
    QStringList found;
    for (const QString& paragraph : text.split(QStringLiteral("\n\n"))) {
        if (!paragraph.trimmed().isEmpty()) {
            found += paragraph;
        }
    }
    return found;
}

}  // namespace

ZPKAlertTexts::ZPKAlertTexts(const QString& text, const QSize& room, QWidget* parent)
    : QWidget(parent),
      m_room(room - QSize(2 * kFocusFrame, 2 * kFocusFrame)),
      m_layout(new QVBoxLayout(this)),
      m_width(widthOfText(text)) {
    m_layout->setContentsMargins(kFocusFrame, kFocusFrame, kFocusFrame, kFocusFrame);
    m_layout->setSpacing(kGap);
    addParagraphs(text, kMostLinesOfView);
    if (m_layout->totalSizeHint().height() > m_room.height()) {
        clear();
        addParagraphs(text, kFewestLinesOfView);
    }
    if (m_layout->totalSizeHint().height() > m_room.height()) {
        clear();
        addView(text, kMostLinesOfView, QString());
    }
}

int ZPKAlertTexts::widthOfText(const QString& text) const {
    const QFontMetrics metrics(headingFont());
    int widest = 0;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        widest = qMax(widest, metrics.horizontalAdvance(line) + kRounding);
    }
    const int most = qMin(kCharacters * fontMetrics().averageCharWidth(), m_room.width());
    return qBound(most / 2, widest, most);
}

QFont ZPKAlertTexts::headingFont() const {
    QFont bold = font();
    bold.setBold(true);
    return bold;
}

void ZPKAlertTexts::addParagraphs(const QString& text, int mostLines) {
    const QStringList paragraphs = paragraphsOf(text);
    for (const QString& paragraph : paragraphs) {
        const bool isHeading = &paragraph == &paragraphs.constFirst();
        if (isHeading || !isList(paragraph)) {
            addLabel(paragraph, isHeading, mostLines);
        } else {
            addView(ZPKReadingView::isolatedLines(withoutIndent(paragraph)), mostLines,
                    paragraphs.constFirst());
        }
    }
}

void ZPKAlertTexts::addLabel(const QString& text, bool isHeading, int mostLines) {
    auto* label = new QLabel;
    label->setObjectName(isHeading ? QStringLiteral("headingLabel") : QStringLiteral("textLabel"));
    label->setFont(isHeading ? headingFont() : font());
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    // Each line would stand at the side that its own letters begin at.
    label->setAlignment(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignTop));
    label->setText(text);
    const int height = label->heightForWidth(m_width);
    if (label->minimumSizeHint().width() > m_width ||
        height > kMostLinesOfLabel * label->fontMetrics().lineSpacing()) {
        delete label;
        addView(text, mostLines, QString());
        return;
    }
    label->setFixedSize(m_width, height);
    m_layout->addWidget(label);
}

void ZPKAlertTexts::addView(const QString& text, int mostLines, const QString& accessibleName) {
    auto* widget = new QPlainTextEdit;
    widget->setObjectName(QStringLiteral("textView"));
    widget->setAccessibleName(accessibleName.isEmpty() ? window()->windowTitle() : accessibleName);
    auto& view = *new ZPKReadingView(*widget);
    view.setText(text);
    const int height = view.heightForWidth(m_width, mostLines);
    widget->setFixedSize(m_width,
                         qMin(qMax(height, view.heightOfLines(kFewestLinesOfView)), m_room.height()));
    m_layout->addWidget(widget);
}

void ZPKAlertTexts::clear() {
    while (QLayoutItem* item = m_layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}
