// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QFocusFrame>
#include <QObject>
#include <QPlainTextEdit>
#include <QPointer>
#include <QString>

/// Makes of a text widget one that shows lines to read: they are folded rather than cut, the keys go through
/// them, and a frame shows that it has the keys. Belongs to the widget. Main thread only.
class ZPKReadingView : public QObject {
public:
    explicit ZPKReadingView(QPlainTextEdit& widget);

    /// Shows the text as it stands, each line from the side at which the reader begins.
    void setText(const QString& text);

    /// The height that the text needs in that width, or that of its first lines where it has more than
    /// `mostLines`.
    int heightForWidth(int width, int mostLines) const;

    /// The height of that many lines.
    int heightOfLines(int lines) const;

    /// Each line in marks that keep its letters' direction from the lines and signs around it.
    static QString isolatedLines(const QString& lines);

private:
    /// The first lines of the text, folded, and whether there are more.
    struct Lines {
        int height = 0;
        bool areMore = false;
    };

    Lines fold(int width, int mostLines) const;

    /// Left to itself, the widget keeps the bar for lines that are folded only because of it.
    void showScrollBarIfNeeded();

    /// What the widget has around its lines, above and below, or on both sides.
    int around() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

    QPlainTextEdit& m_widget;
    /// Moves in between the widget's neighbours, with which it may go first.
    const QPointer<QFocusFrame> m_frame;
};
