// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QSize>
#include <QString>
#include <QVBoxLayout>
#include <QWidget>

/// The texts of an alert, never read as markup and never wider or higher than their room: the first paragraph
/// is their heading; lists, long paragraphs, and when nothing else helps the whole text, are scrolled. Main
/// thread only.
class ZPKAlertTexts : public QWidget {
public:
    /// What the texts have around them, for the frame which shows that one has the keys.
    static constexpr int kFocusFrame = 3;

    /// Paragraphs end with an empty line. One whose lines all begin with two blanks is a list.
    ZPKAlertTexts(const QString& text, const QSize& room, QWidget* parent);

private:
    int widthOfText(const QString& text) const;
    QFont headingFont() const;
    void addParagraphs(const QString& text, int mostLines);
    void addLabel(const QString& text, bool isHeading, int mostLines);
    void addView(const QString& text, int mostLines, const QString& accessibleName);
    void clear();

    const QSize m_room;
    QVBoxLayout* const m_layout;
    const int m_width;
};
