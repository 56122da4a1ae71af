// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKProgressWindowController.h"

#include "UserInterface/ZPKFrontEnd.h"

ZPKProgressWindowController::ZPKProgressWindowController(ZPKFrontEnd& frontEnd)
    : m_window(frontEnd.createProgressWindow()) {
    if (m_window) {
        _progressIndicator = &m_window->progressIndicator();
        awakeFromNib();
    }
}

void ZPKProgressWindowController::awakeFromNib() {
    m_window->center();
    _progressIndicator->setMinValue(0.0);
    _progressIndicator->setMaxValue(100.0);
    _progressIndicator->setUsesThreadedAnimation(true);
}

void ZPKProgressWindowController::setTitle(const std::string& title) {
    if (m_window) {
        m_window->setTitle(title);
    }
}

void ZPKProgressWindowController::setProgressValue(double value) {
    if (_progressIndicator != nullptr) {
        _progressIndicator->setDoubleValue(value);
        _progressIndicator->setNeedsDisplay();
    }
}

void ZPKProgressWindowController::close() {
    if (m_window) {
        m_window->close();
    }
}
