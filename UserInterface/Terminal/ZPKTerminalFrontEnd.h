// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>

#include "UserInterface/Terminal/ZPKTerminal.h"
#include "UserInterface/Terminal/ZPKTerminalWindow.h"
#include "UserInterface/Terminal/ZPKWakeUp.h"
#include "UserInterface/ZPKFrontEndBase.h"

/// The front end on a terminal: progress as a line, an alert as text on standard error, the disc
/// search as a question. With no terminal to ask on, a question counts as Cancel.
class ZPKTerminalFrontEnd : private ZPKWakeUp, public ZPKFrontEndBase {
public:
    /// Asks on standard input and writes on standard output and standard error.
    ZPKTerminalFrontEnd();

    /// The same on other descriptors, which stay the caller's.
    ZPKTerminalFrontEnd(int input, int output, int error);

    void activateIgnoringOtherApps() override {}
    void setInterfaceLanguage(const std::string& code) override { m_language = code; }
    void setMenuItemTitle(ZPKMenuItem, const std::string&) override {}
    std::unique_ptr<ZPKProgressWindow> createProgressWindow() override;
    std::unique_ptr<ZPKCDSearchWindow> createCDSearchWindow() override;
    void runAlert(const ZPKAlert& alert) override;
    std::unique_ptr<ZPKModalSession> beginModalSessionForWindow(ZPKWindow& window) override;

private:
    friend class ZPKTerminalModalSession;

    bool prepare() override;
    void runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) override;
    void runLoop(ZPKModalLoop& loop) override;

    void askUntilStopped(ZPKTerminalWindow& window, ZPKModalLoop& loop);
    std::optional<std::string> waitForLine(const ZPKModalLoop& loop);

    ZPKTerminal m_terminal;
    std::string m_language;
};
