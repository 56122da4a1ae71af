// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLabel>

/// What the labels of several windows have in common. Main thread only.
class ZPKFormLabel {
public:
    ZPKFormLabel() = delete;

    /// The label shows its text as it stands, folded where the window ends, and at the reader's side.
    static void prepare(QLabel& label, Qt::Alignment vertical);

    /// The label is a heading: what the package is called, in bold letters, however long the words in it are.
    /// Without a name it takes no room.
    static void showProductName(QLabel& label);
};
