// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLabel>
#include <QProgressBar>
#include <QWidget>
#include <memory>
#include <string>

#include "UserInterface/Desktop/ZPKFormWindow.h"
#include "UserInterface/ZPKProgressWindow.h"

/// The window of the form `ProgressWindow.ui`. A person cannot close it.
class ZPKDesktopProgressWindow : public ZPKDesktopWindow<ZPKProgressWindow>, private ZPKProgressIndicator {
public:
    /// Null, after a line on standard error, when the form cannot be loaded.
    static std::unique_ptr<ZPKDesktopProgressWindow> createFromFolder(const QString& folder);

    ZPKProgressIndicator& progressIndicator() override { return *this; }
    void setTitle(const std::string& title) override;

private:
    ZPKDesktopProgressWindow(std::unique_ptr<QWidget> root, QLabel* label, QProgressBar* bar);

    void setMinValue(double value) override;
    void setMaxValue(double value) override;
    void setDoubleValue(double value) override;
    void setIndeterminate(bool indeterminate) override;
    void setUsesThreadedAnimation(bool) override {}
    void startAnimation() override;
    void stopAnimation() override;
    void setNeedsDisplay() override;

    void updateBar();

    QLabel* m_label;
    QProgressBar* m_bar;
    double m_minValue = 0;
    double m_maxValue = 100;
    double m_value = 0;
    bool m_indeterminate = false;
    bool m_animating = false;
};
