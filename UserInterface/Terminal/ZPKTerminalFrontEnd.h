// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "UserInterface/Terminal/ZPKDimStream.h"
#include "UserInterface/Terminal/ZPKTerminal.h"
#include "UserInterface/Terminal/ZPKTerminalProgressWindow.h"
#include "UserInterface/Terminal/ZPKTerminalWindow.h"
#include "UserInterface/Terminal/ZPKWakeUp.h"
#include "UserInterface/ZPKFrontEndBase.h"

/// The front end on a terminal: progress as a line, an alert as text, the disc search as a question. With no
/// terminal to ask on, a question counts as Cancel. Where diagnostics come between the words for the person,
/// they are dim.
class ZPKTerminalFrontEnd : private ZPKWakeUp, public ZPKFrontEndBase {
public:
    /// Asks on standard input and writes on standard output and standard error.
    ZPKTerminalFrontEnd();

    /// The same on other descriptors, which stay the caller's, without a hand in the diagnostics, and with a
    /// time of its own.
    ZPKTerminalFrontEnd(int input, int output, int error,
                        ZPKTerminalProgressWindow::Now now = &std::chrono::steady_clock::now);

    void activateIgnoringOtherApps() override {}
    void setInterfaceLanguage(const std::string& code) override { m_language = code; }
    void setMenuItemTitle(ZPKMenuItem, const std::string&) override {}
    std::unique_ptr<ZPKProgressWindow> createProgressWindow() override;
    std::unique_ptr<ZPKCDSearchWindow> createCDSearchWindow() override;
    void runAlert(const ZPKAlert& alert) override;
    std::unique_ptr<ZPKModalSession> beginModalSessionForWindow(ZPKWindow& window) override;
    bool cancelQuestion() override;

private:
    friend class ZPKTerminalModalSession;

    bool prepare() override;
    void runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) override;
    void runLoop(ZPKModalLoop& loop) override;

    void runUntilStopped(ZPKTerminalWindow& window, ZPKModalLoop& loop);
    void askUntilStopped(ZPKTerminalWindow& window, ZPKModalLoop& loop);
    std::optional<std::string> answer(ZPKTerminalWindow& window, const ZPKModalLoop& loop);
    std::optional<std::string> waitForLine(ZPKTerminalWindow& window, const ZPKModalLoop& loop);

    enum class Question { None, Asked, Cancelled };

    ZPKTerminal m_terminal;
    const ZPKTerminalProgressWindow::Now m_now;
    std::atomic<Question> m_question{Question::None};
    std::optional<ZPKDimStream> m_dimOutput;
    std::optional<ZPKDimStream> m_dimError;
    std::string m_language;
};
