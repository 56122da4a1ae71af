// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopProgressWindow.h"

#include <algorithm>
#include <cmath>

#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKForm.h"

std::unique_ptr<ZPKDesktopProgressWindow> ZPKDesktopProgressWindow::createFromFolder(const QString& folder) {
    ZPKForm form(folder, QStringLiteral("ProgressWindow.ui"));
    auto* label = form.find<QLabel>("titleLabel");
    auto* bar = form.find<QProgressBar>("progressIndicator");
    std::unique_ptr<QWidget> root = form.takeRoot<QWidget>();
    if (!form.check()) {
        return nullptr;
    }
    return std::unique_ptr<ZPKDesktopProgressWindow>(
        new ZPKDesktopProgressWindow(std::move(root), label, bar));
}

ZPKDesktopProgressWindow::ZPKDesktopProgressWindow(std::unique_ptr<QWidget> root, QLabel* label,
                                                   QProgressBar* bar)
    : ZPKDesktopWindow(std::move(root), Size::Fixed), m_label(label), m_bar(bar) {
    m_label->setTextFormat(Qt::PlainText);
    m_bar->setRange(0, 100);
}

void ZPKDesktopProgressWindow::setTitle(const std::string& title) {
    setWindowTitle(title);
    m_label->setText(ZPKDesktopText(title));
    m_bar->setAccessibleName(ZPKDesktopText(title));
    fitContents();
}

void ZPKDesktopProgressWindow::setMinValue(double value) {
    m_minValue = value;
    updateBar();
}

void ZPKDesktopProgressWindow::setMaxValue(double value) {
    m_maxValue = value;
    updateBar();
}

void ZPKDesktopProgressWindow::setDoubleValue(double value) {
    m_value = value;
    updateBar();
}

void ZPKDesktopProgressWindow::setIndeterminate(bool indeterminate) {
    m_indeterminate = indeterminate;
    updateBar();
}

void ZPKDesktopProgressWindow::startAnimation() {
    m_animating = true;
    updateBar();
}

void ZPKDesktopProgressWindow::stopAnimation() {
    m_animating = false;
    updateBar();
}

void ZPKDesktopProgressWindow::setNeedsDisplay() {
    m_bar->update();
}

void ZPKDesktopProgressWindow::updateBar() {
    // A bar without a range is the toolkit's way to say that nobody knows how long it takes.
    if (m_indeterminate && m_animating) {
        m_bar->setRange(0, 0);
        return;
    }
    const double share = (m_value - m_minValue) / (m_maxValue - m_minValue);
    const bool isKnown = !m_indeterminate && std::isfinite(share);
    m_bar->setRange(0, 100);
    m_bar->setValue(isKnown ? static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * 100.0)) : 0);
}
