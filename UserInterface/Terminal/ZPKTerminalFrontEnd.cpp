// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminalFrontEnd.h"

#include <unistd.h>

#include "UserInterface/Terminal/ZPKTerminalCDSearchWindow.h"
#include "UserInterface/Terminal/ZPKTerminalProgressWindow.h"

namespace {

constexpr int kSessionWaitMilliseconds = 20;

/// Every window comes from this front end.
ZPKTerminalWindow& terminalWindow(ZPKWindow& window) {
    return dynamic_cast<ZPKTerminalWindow&>(window);
}

}  // namespace

class ZPKTerminalModalSession : public ZPKModalSession {
public:
    explicit ZPKTerminalModalSession(ZPKTerminalFrontEnd& frontEnd) : m_frontEnd(frontEnd) {}

    bool run() override {
        m_frontEnd.wait(-1, kSessionWaitMilliseconds);
        m_frontEnd.runPendingActions();
        return !m_frontEnd.isLoopStopped();
    }

private:
    ZPKTerminalFrontEnd& m_frontEnd;
};

ZPKTerminalFrontEnd::ZPKTerminalFrontEnd()
    : ZPKTerminalFrontEnd(STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO) {}

ZPKTerminalFrontEnd::ZPKTerminalFrontEnd(int input, int output, int error)
    : ZPKFrontEndBase([this] { wake(); }), m_terminal(input, output, error) {}

bool ZPKTerminalFrontEnd::prepare() {
    const ZPKOutcome canBeWoken = outcome();
    if (!canBeWoken) {
        m_terminal.printError("Zephyrkit: " + canBeWoken.failure().message() + "\n");
    }
    return static_cast<bool>(canBeWoken);
}

std::unique_ptr<ZPKProgressWindow> ZPKTerminalFrontEnd::createProgressWindow() {
    return std::make_unique<ZPKTerminalProgressWindow>(m_terminal, m_language);
}

std::unique_ptr<ZPKCDSearchWindow> ZPKTerminalFrontEnd::createCDSearchWindow() {
    return std::make_unique<ZPKTerminalCDSearchWindow>(m_terminal);
}

void ZPKTerminalFrontEnd::runAlert(const ZPKAlert& alert) {
    std::string text = alert.messageText + "\n";
    if (!alert.informativeText.empty()) {
        text += alert.informativeText + "\n";
    }
    m_terminal.printError(text);
}

std::unique_ptr<ZPKModalSession> ZPKTerminalFrontEnd::beginModalSessionForWindow(ZPKWindow& window) {
    terminalWindow(window).show();
    return std::make_unique<ZPKTerminalModalSession>(*this);
}

void ZPKTerminalFrontEnd::runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) {
    ZPKTerminalWindow& shown = terminalWindow(window);
    shown.show();
    if (shown.question().empty()) {
        runLoop(loop);
    } else {
        askUntilStopped(shown, loop);
    }
}

void ZPKTerminalFrontEnd::runLoop(ZPKModalLoop& loop) {
    runPendingActions();
    while (!loop.isStopped()) {
        wait(-1, -1);
        runPendingActions();
    }
}

void ZPKTerminalFrontEnd::askUntilStopped(ZPKTerminalWindow& window, ZPKModalLoop& loop) {
    while (!loop.isStopped()) {
        if (m_terminal.isInteractive()) {
            m_terminal.print(window.question());
        }
        const std::optional<std::string> line = waitForLine(loop);
        if (loop.isStopped()) {
            return;
        }
        window.takeAnswer(line);
        if (!line) {
            // Nobody will ever answer: an owner that does not take this as Cancel must not wait.
            stopModal(ZPKModalResponseAbort);
        }
    }
}

std::optional<std::string> ZPKTerminalFrontEnd::waitForLine(const ZPKModalLoop& loop) {
    if (!m_terminal.isInteractive()) {
        return std::nullopt;
    }
    runPendingActions();
    while (!loop.isStopped()) {
        if (std::optional<std::string> line = m_terminal.takeLine()) {
            return line;
        }
        if (wait(m_terminal.input(), -1) && !m_terminal.readInput()) {
            m_terminal.print("\n");
            return std::nullopt;
        }
        runPendingActions();
    }
    return std::nullopt;
}
