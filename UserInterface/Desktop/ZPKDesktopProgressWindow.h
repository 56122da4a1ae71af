// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLabel>
#include <QProgressBar>
#include <QWidget>
#include <memory>
#include <string>

#include "UserInterface/Desktop/ZPKFormWindow.h"
#include "UserInterface/ZPKProgressState.h"
#include "UserInterface/ZPKProgressWindow.h"

/// The window of the form `ProgressWindow.ui`. A person cannot close it.
class ZPKDesktopProgressWindow : public ZPKDesktopWindow<ZPKProgressWindow> {
public:
    /// Null, after a line on standard error, when the form cannot be loaded.
    static std::unique_ptr<ZPKDesktopProgressWindow> createFromFolder(const std::string& folder);

    ZPKProgressIndicator& progressIndicator() override { return m_state; }
    void setTitle(const std::string& title) override;

private:
    ZPKDesktopProgressWindow(std::unique_ptr<QWidget> root, QLabel* label, QProgressBar* bar);

    void updateBar();

    QLabel* m_label;
    QProgressBar* m_bar;
    ZPKProgressState m_state{[this] { updateBar(); }};
};
