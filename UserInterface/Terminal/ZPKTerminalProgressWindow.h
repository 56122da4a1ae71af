// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>

#include "UserInterface/Terminal/ZPKTerminal.h"
#include "UserInterface/Terminal/ZPKTerminalWindow.h"
#include "UserInterface/ZPKProgressState.h"
#include "UserInterface/ZPKProgressWindow.h"

/// The progress as a line: the title with the percentage, or the title once when nobody knows how
/// long it takes.
class ZPKTerminalProgressWindow : public ZPKProgressWindow, public ZPKTerminalWindow {
public:
    /// The terminal outlives the window. `language` is the code of the language that the percentage is
    /// written in.
    ZPKTerminalProgressWindow(ZPKTerminal& terminal, std::string language)
        : m_terminal(terminal), m_language(std::move(language)) {}

    ZPKProgressIndicator& progressIndicator() override { return m_state; }
    void center() override {}
    void setTitle(const std::string& title) override;
    void makeKeyAndOrderFront() override { show(); }
    void close() override;

    void show() override;
    std::string question() const override { return {}; }
    void takeAnswer(const std::optional<std::string>&) override {}

private:
    void print();
    std::string line() const;

    ZPKTerminal& m_terminal;
    const std::string m_language;
    std::string m_title;
    std::string m_printed;
    ZPKProgressState m_state{[this] { print(); }};
    bool m_shown = false;
};
