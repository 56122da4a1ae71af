// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminalFrontEnd.h"

#include <unistd.h>

#include <utility>

#include "UserInterface/Terminal/ZPKTerminalCDSearchWindow.h"

namespace {

constexpr int kSessionWaitMilliseconds = 20;

/// A line that shows seconds, and a width that a person's hand changes, are looked at this often.
constexpr int kRefreshMilliseconds = 200;

/// Every window comes from this front end.
ZPKTerminalWindow& terminalWindow(ZPKWindow& window) {
    return dynamic_cast<ZPKTerminalWindow&>(window);
}

}  // namespace

class ZPKTerminalModalSession : public ZPKModalSession {
public:
    ZPKTerminalModalSession(ZPKTerminalFrontEnd& frontEnd, ZPKTerminalWindow& window)
        : m_frontEnd(frontEnd), m_window(window) {}

    bool run() override {
        m_frontEnd.wait(-1, kSessionWaitMilliseconds);
        m_frontEnd.runPendingActions();
        m_window.refresh();
        return !m_frontEnd.isLoopStopped();
    }

private:
    ZPKTerminalFrontEnd& m_frontEnd;
    ZPKTerminalWindow& m_window;
};

ZPKTerminalFrontEnd::ZPKTerminalFrontEnd() : ZPKTerminalFrontEnd(STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO) {
    if (m_terminal.dimsDiagnostics()) {
        m_dimOutput.emplace(stdout, STDOUT_FILENO);
        m_dimError.emplace(stderr, STDERR_FILENO);
    }
}

ZPKTerminalFrontEnd::ZPKTerminalFrontEnd(int input, int output, int error, ZPKTerminalProgressWindow::Now now)
    : ZPKFrontEndBase([this] { wake(); }), m_terminal(input, output, error), m_now(std::move(now)) {}

bool ZPKTerminalFrontEnd::prepare() {
    const ZPKOutcome canBeWoken = outcome();
    if (!canBeWoken) {
        m_terminal.printError("Zephyrkit: " + canBeWoken.failure().message() + "\n");
    }
    return static_cast<bool>(canBeWoken);
}

std::unique_ptr<ZPKProgressWindow> ZPKTerminalFrontEnd::createProgressWindow() {
    return std::make_unique<ZPKTerminalProgressWindow>(m_terminal, m_language, m_now);
}

std::unique_ptr<ZPKCDSearchWindow> ZPKTerminalFrontEnd::createCDSearchWindow() {
    return std::make_unique<ZPKTerminalCDSearchWindow>(m_terminal);
}

void ZPKTerminalFrontEnd::runAlert(const ZPKAlert& alert) {
    std::string text = alert.messageText + "\n";
    if (!alert.informativeText.empty()) {
        text += alert.informativeText + "\n";
    }
    m_terminal.tellApart(text);
}

std::unique_ptr<ZPKModalSession> ZPKTerminalFrontEnd::beginModalSessionForWindow(ZPKWindow& window) {
    ZPKTerminalWindow& shown = terminalWindow(window);
    shown.show();
    return std::make_unique<ZPKTerminalModalSession>(*this, shown);
}

void ZPKTerminalFrontEnd::runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) {
    ZPKTerminalWindow& shown = terminalWindow(window);
    shown.show();
    if (shown.question().empty()) {
        runUntilStopped(shown, loop);
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

void ZPKTerminalFrontEnd::runUntilStopped(ZPKTerminalWindow& window, ZPKModalLoop& loop) {
    runPendingActions();
    while (!loop.isStopped()) {
        window.refresh();
        wait(-1, m_terminal.isRewriting() ? kRefreshMilliseconds : -1);
        runPendingActions();
    }
}

bool ZPKTerminalFrontEnd::cancelQuestion() {
    Question asked = Question::Asked;
    if (!m_question.compare_exchange_strong(asked, Question::Cancelled)) {
        return false;
    }
    wake();
    return true;
}

void ZPKTerminalFrontEnd::askUntilStopped(ZPKTerminalWindow& window, ZPKModalLoop& loop) {
    while (!loop.isStopped()) {
        const std::optional<std::string> line = answer(window, loop);
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

std::optional<std::string> ZPKTerminalFrontEnd::answer(ZPKTerminalWindow& window, const ZPKModalLoop& loop) {
    if (!m_terminal.isInteractive()) {
        return std::nullopt;
    }
    m_question = Question::Asked;
    m_terminal.tell(window.question());
    std::optional<std::string> line = waitForLine(window, loop);
    // A cancellation that came with the line counts: its sender has been told so.
    const bool isCancelled = m_question.exchange(Question::None) == Question::Cancelled;
    if (!line) {
        // Nobody has ended the question's line.
        m_terminal.tell("\n");
    }
    return isCancelled ? std::nullopt : line;
}

std::optional<std::string> ZPKTerminalFrontEnd::waitForLine(ZPKTerminalWindow& window,
                                                            const ZPKModalLoop& loop) {
    runPendingActions();
    while (!loop.isStopped() && m_question == Question::Asked) {
        if (std::optional<std::string> line = m_terminal.takeLine()) {
            return line;
        }
        if (wait(m_terminal.input(), kRefreshMilliseconds) && !m_terminal.readInput()) {
            return std::nullopt;
        }
        window.refresh();
        runPendingActions();
    }
    return std::nullopt;
}
