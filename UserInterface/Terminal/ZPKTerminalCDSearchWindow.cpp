// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminalCDSearchWindow.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "Base/ZPKTerminalText.h"

namespace {

/// As the keyboards of the languages have them: Arabic ones, and those for wide characters.
constexpr const char* kOne[] = {"1", "\u0661", "\u06F1", "\uFF11"};
constexpr const char* kTwo[] = {"2", "\u0662", "\u06F2", "\uFF12"};

/// No more of a wrong answer is shown again.
constexpr std::size_t kLongestEcho = 40;

template <std::size_t Size>
bool isIn(const char* const (&texts)[Size], std::string_view answer) {
    return std::find(std::begin(texts), std::end(texts), answer) != std::end(texts);
}

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
    for (std::string_view rest = m_productList; !rest.empty();) {
        const std::string_view product = rest.substr(0, rest.find('\n'));
        text.append("  ").append(product).append("\n");
        rest.remove_prefix(std::min(product.size() + 1, rest.size()));
    }
    m_terminal.tellApart(text);
}

std::string ZPKTerminalCDSearchWindow::question() const {
    return "\n> [1] " + ZPKTerminal::line(m_searchTitle) + "\n  [2] " + ZPKTerminal::line(m_cancelTitle) +
           "\n[1]: ";
}

void ZPKTerminalCDSearchWindow::takeAnswer(const std::optional<std::string>& line) {
    // The actions may set others, or end this window's life.
    const Actions actions = m_actions;
    const std::string answer = line ? trimmed(*line) : kTwo[0];
    if (answer.empty() || isIn(kOne, answer)) {
        perform(actions.pushSearch);
    } else if (isIn(kTwo, answer)) {
        perform(actions.pushCancel);
    } else {
        m_terminal.tell("\"" + ZPKTerminalText::printable(answer, kLongestEcho) + "\" ? [1] [2]\n");
    }
}
