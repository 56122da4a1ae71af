// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QPoint>
#include <QSize>
#include <QWidget>

/// Where a window finds its place on the screen. Main thread only.
class ZPKScreenFit {
public:
    ZPKScreenFit() = delete;

    /// The size that a window may take, whatever its texts: the frame that a window manager puts around it,
    /// which nobody knows before, has its place beside it.
    static QSize largestSize(const QWidget& window);

    /// Where a window of that size, with its frame, stands in the middle of the screen.
    static QPoint centeredPosition(const QWidget& window, const QSize& size);

    /// The width of that many characters in the window's font, and enough for the window's title beside
    /// what else the title bar holds; never more than `largestSize`.
    static int widthOfCharacters(const QWidget& window, int characters);

    /// The height of that many lines of the window's text.
    static int heightOfLines(const QWidget& window, int lines);
};
