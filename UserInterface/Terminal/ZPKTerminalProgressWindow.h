// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <utility>

#include "UserInterface/Terminal/ZPKTerminal.h"
#include "UserInterface/Terminal/ZPKTerminalWindow.h"
#include "UserInterface/ZPKProgressState.h"
#include "UserInterface/ZPKProgressWindow.h"

/// The progress as a line that is rewritten while the time passes. Where no line can be, each percentage is a
/// line with the title, and a title alone when nobody knows how long it takes.
class ZPKTerminalProgressWindow : public ZPKProgressWindow, public ZPKTerminalWindow {
public:
    /// Time that only goes forward.
    using Now = std::function<std::chrono::steady_clock::time_point()>;

    /// The terminal outlives the window. `language` is the code of the language that the numbers are
    /// written in.
    ZPKTerminalProgressWindow(ZPKTerminal& terminal, std::string language, Now now)
        : m_terminal(terminal), m_language(std::move(language)), m_now(std::move(now)) {}

    ZPKProgressIndicator& progressIndicator() override { return m_state; }
    void center() override {}
    void setTitle(const std::string& title) override;
    void makeKeyAndOrderFront() override { show(); }
    void close() override;

    void show() override;
    std::string question() const override { return {}; }
    void refresh() override;
    void takeAnswer(const std::optional<std::string>&) override {}

private:
    void print();
    void printLine();
    void rewriteLine();

    ZPKTerminal& m_terminal;
    const std::string m_language;
    const Now m_now;
    std::chrono::steady_clock::time_point m_shownAt;
    std::string m_title;
    std::string m_printed;
    /// The title stands above the line.
    bool m_isTitleAbove = false;
    ZPKProgressState m_state{[this] { print(); }};
    bool m_shown = false;
};
