// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminalCDSearchWindow.h"

#include <sstream>
#include <utility>

namespace {

std::string trimmed(const std::string& text) {
    constexpr const char* kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void perform(const std::function<void()>& action) {
    if (action) {
        action();
    }
}

}  // namespace

void ZPKTerminalCDSearchWindow::setActions(Actions actions) {
    m_actions = std::move(actions);
}

void ZPKTerminalCDSearchWindow::show() {
    if (m_shown) {
        return;
    }
    m_shown = true;
    std::string text = ZPKTerminal::line(m_title) + "\n\n" + m_message + "\n";
    std::istringstream products(m_productList);
    for (std::string product; std::getline(products, product);) {
        text += "  " + product + "\n";
    }
    m_terminal.print(text);
}

std::string ZPKTerminalCDSearchWindow::question() const {
    return "[1] " + ZPKTerminal::line(m_searchTitle) + "  [2] " + ZPKTerminal::line(m_cancelTitle) + ": ";
}

void ZPKTerminalCDSearchWindow::takeAnswer(const std::optional<std::string>& line) {
    // The actions may set others, or end this window's life.
    const Actions actions = m_actions;
    const std::string answer = line ? trimmed(*line) : "2";
    if (answer.empty() || answer == "1") {
        perform(actions.pushSearch);
    } else if (answer == "2") {
        perform(actions.pushCancel);
    }
}
