// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKFormLabel.h"

#include <QFont>
#include <QStyle>
#include <QTextBoundaryFinder>

#include "UserInterface/Desktop/ZPKDesktopIdentity.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"

namespace {

/// Characters that are never parted fit even a small screen with large letters.
constexpr int kLongestPiece = 20;

constexpr QChar kZeroWidthSpace(0x200b);

/// With places to fold it at: behind its signs, and where there is none for long, anywhere.
QString foldableWord(const QString& word) {
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, word);
    QString text;
    int piece = 0;
    qsizetype start = 0;
    for (qsizetype end = characters.toNextBoundary(); end > 0; end = characters.toNextBoundary()) {
        text += QStringView(word).sliced(start, end - start);
        ++piece;
        const bool isSign = !word.at(start).isLetterOrNumber() && !word.at(start).isSurrogate();
        if ((isSign || piece == kLongestPiece) && end < word.size()) {
            text += kZeroWidthSpace;
            piece = 0;
        }
        start = end;
    }
    return text;
}

/// A label folds between words alone.
QString foldable(const QString& name) {
    QTextBoundaryFinder places(QTextBoundaryFinder::Line, name);
    QString text;
    qsizetype start = 0;
    for (qsizetype end = places.toNextBoundary(); end > 0; end = places.toNextBoundary()) {
        const QString word = name.sliced(start, end - start);
        text += word.size() > kLongestPiece ? foldableWord(word) : word;
        start = end;
    }
    return text;
}

}  // namespace

void ZPKFormLabel::prepare(QLabel& label, Qt::Alignment vertical) {
    label.setTextFormat(Qt::PlainText);
    label.setWordWrap(true);
    // What cannot be selected is drawn with the blank at the end of each line, which moves right-to-left
    // ones.
    label.setTextInteractionFlags(Qt::TextSelectableByMouse);
    // At the reader's side whatever letters it begins with.
    label.setAlignment(QStyle::visualAlignment(label.layoutDirection(), Qt::AlignLeft | vertical));
    // By itself a label that folds its text asks for a width of its own.
    label.setMinimumSize(0, 1);
    QSizePolicy policy = label.sizePolicy();
    policy.setHorizontalPolicy(QSizePolicy::Expanding);
    policy.setHorizontalStretch(1);
    label.setSizePolicy(policy);
}

void ZPKFormLabel::showProductName(QLabel& label) {
    QFont font = label.font();
    font.setBold(true);
    label.setFont(font);
    const QString name = ZPKDesktopText(ZPKDesktopIdentity::displayName());
    label.setText(foldable(name));
    label.setAccessibleName(name);
    label.setVisible(!name.trimmed().isEmpty());
}
