// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminalProgressWindow.h"

#include "UserInterface/Terminal/ZPKFoldedText.h"
#include "UserInterface/Terminal/ZPKPercentText.h"
#include "UserInterface/Terminal/ZPKProgressLine.h"

void ZPKTerminalProgressWindow::setTitle(const std::string& title) {
    m_title = ZPKTerminal::line(title);
    m_isTitleAbove = false;
    print();
}

void ZPKTerminalProgressWindow::show() {
    if (!m_shown) {
        m_shown = true;
        m_shownAt = m_now();
    }
    print();
}

void ZPKTerminalProgressWindow::refresh() {
    if (m_terminal.isRewriting()) {
        print();
    }
}

void ZPKTerminalProgressWindow::close() {
    m_shown = false;
    m_printed.clear();
    m_isTitleAbove = false;
    m_terminal.endStatus();
}

void ZPKTerminalProgressWindow::print() {
    const bool hasSomething = m_state.isIndeterminate() ? !m_title.empty() : m_state.percent().has_value();
    if (!m_shown || !hasSomething) {
        return;
    }
    if (m_terminal.isRewriting()) {
        rewriteLine();
    } else {
        printLine();
    }
}

void ZPKTerminalProgressWindow::printLine() {
    const std::optional<int> percent = m_state.percent();
    const std::string text = (percent ? ZPKPercentText::of(*percent, m_language) + "  " : "") + m_title;
    if (text != m_printed) {
        m_printed = text;
        m_terminal.print(text + "\n");
    }
}

void ZPKTerminalProgressWindow::rewriteLine() {
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(m_now() - m_shownAt);
    const ZPKProgressLine line{m_state.percent(), elapsed, m_title, m_language};
    const std::size_t columns = m_terminal.statusColumns();
    const std::optional<std::string> whole = m_isTitleAbove ? std::nullopt : line.whole(columns);
    if (!whole && !m_isTitleAbove) {
        m_isTitleAbove = true;
        m_terminal.print(ZPKFoldedText::of(m_title, columns) + "\n");
    }
    const std::string text = whole ? *whole : line.withoutTitle(columns);
    if (text != m_printed) {
        m_printed = text;
        m_terminal.printStatus(text);
    }
}
