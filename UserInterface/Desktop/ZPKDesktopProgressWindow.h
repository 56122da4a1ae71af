// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <chrono>
#include <memory>
#include <string>

#include "UserInterface/Desktop/ZPKBusyMark.h"
#include "UserInterface/Desktop/ZPKFormWindow.h"
#include "UserInterface/ZPKProgressState.h"
#include "UserInterface/ZPKProgressWindow.h"

/// The window of the form `ProgressWindow.ui`: the product's name, the bar, and below it a mark that turns
/// and, when it takes longer, the time since the work began. A person cannot close it.
class ZPKDesktopProgressWindow : public ZPKDesktopWindow<ZPKProgressWindow> {
public:
    /// Null, after a line on standard error, when the form cannot be loaded.
    static std::unique_ptr<ZPKDesktopProgressWindow> createFromFolder(const std::string& folder);

    ZPKProgressIndicator& progressIndicator() override { return m_state; }
    void setTitle(const std::string& title) override;

    /// From the third second on, in the digits of the language.
    void showElapsedTime(std::chrono::seconds elapsed) override;

private:
    struct Controls {
        QLabel* iconLabel = nullptr;
        QLabel* headingLabel = nullptr;
        QProgressBar* bar = nullptr;
        QLabel* elapsedLabel = nullptr;
        ZPKBusyMark* mark = nullptr;
    };

    ZPKDesktopProgressWindow(std::unique_ptr<QDialog> root, const Controls& controls);

    void workBegins() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void updateBar();

    Controls m_controls;
    QElapsedTimer m_elapsed;
    QTimer m_ticks;
    ZPKProgressState m_state{[this] { updateBar(); }};
};
