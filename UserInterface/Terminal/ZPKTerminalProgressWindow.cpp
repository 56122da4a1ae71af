// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminalProgressWindow.h"

#include "UserInterface/Terminal/ZPKPercentText.h"

void ZPKTerminalProgressWindow::setTitle(const std::string& title) {
    m_title = ZPKTerminal::line(title);
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

void ZPKTerminalProgressWindow::print() {
    const std::string text = m_shown ? line() : std::string();
    if (text.empty() || text == m_printed) {
        return;
    }
    m_printed = text;
    if (m_state.isIndeterminate()) {
        m_terminal.print(text + "\n");
    } else {
        m_terminal.printStatus(text);
    }
}

std::string ZPKTerminalProgressWindow::line() const {
    if (m_state.isIndeterminate()) {
        return m_title;
    }
    const std::optional<int> percent = m_state.percent();
    return percent ? m_title + ": " + ZPKPercentText::of(*percent, m_language) : std::string();
}
