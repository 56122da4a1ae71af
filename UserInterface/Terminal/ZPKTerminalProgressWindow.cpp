// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminalProgressWindow.h"

#include <algorithm>
#include <cmath>

void ZPKTerminalProgressWindow::setTitle(const std::string& title) {
    m_title = ZPKTerminalLine(title);
    print();
}

void ZPKTerminalProgressWindow::show() {
    m_shown = true;
    print();
}

void ZPKTerminalProgressWindow::close() {
    m_shown = false;
    m_printed.clear();
    m_terminal.endStatus();
}

void ZPKTerminalProgressWindow::setDoubleValue(double value) {
    m_value = value;
    m_hasValue = true;
    print();
}

void ZPKTerminalProgressWindow::setIndeterminate(bool indeterminate) {
    m_indeterminate = indeterminate;
    print();
}

void ZPKTerminalProgressWindow::print() {
    const std::string text = m_shown ? line() : std::string();
    if (text.empty() || text == m_printed) {
        return;
    }
    m_printed = text;
    if (m_indeterminate) {
        m_terminal.print(text + "\n");
    } else {
        m_terminal.printStatus(text);
    }
}

std::string ZPKTerminalProgressWindow::line() const {
    if (m_indeterminate) {
        return m_title;
    }
    const double share = (m_value - m_minValue) / (m_maxValue - m_minValue);
    if (!m_hasValue || !std::isfinite(share)) {
        return {};
    }
    const long percent = std::lround(std::clamp(share, 0.0, 1.0) * 100.0);
    return m_title + ": " + std::to_string(percent) + " %";
}
