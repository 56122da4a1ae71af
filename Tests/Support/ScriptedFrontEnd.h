// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "UserInterface/ZPKFrontEnd.h"

namespace zpk_test {

/// A front end without windows: writes down what it is asked, one line each, and plays the person.
class ScriptedFrontEnd : public ZPKFrontEnd {
public:
    /// What was asked, in order, such as "progress: title=..." or "modal: begin".
    std::vector<std::string> log() const;

    /// Called with each line as it is logged, on the thread that logs it.
    std::function<void(const std::string&)> onLog;

    /// What a person does when the disc search window is shown modally; called repeatedly until the
    /// modal loop is stopped. Without it the person closes the window.
    std::function<void(const ZPKCDSearchWindow::Actions&)> onDiscWindow;

    /// Makes the next windows impossible, as a broken form does.
    bool formsAreBroken = false;

    int run(ZPKApplicationDelegate& delegate) override;
    void terminate() override;
    void activateIgnoringOtherApps() override;
    void setInterfaceLanguage(const std::string& code) override;
    void setMenuItemTitle(ZPKMenuItem item, const std::string& title) override;
    std::unique_ptr<ZPKProgressWindow> createProgressWindow() override;
    std::unique_ptr<ZPKCDSearchWindow> createCDSearchWindow() override;
    void runAlert(const ZPKAlert& alert) override;
    int runModalForWindow(ZPKWindow& window) override;
    void stopModal(int code) override;
    void abortModal() override;
    std::unique_ptr<ZPKModalSession> beginModalSessionForWindow(ZPKWindow& window) override;
    void performOnMainThreadAndWait(const std::function<void()>& action) override;

    /// Adds a line; any thread.
    void note(const std::string& line);

    /// Runs the actions that wait for the main thread, waiting a moment when there are none.
    void runPendingActions();

private:
    class Indicator;
    class ProgressWindow;
    class DiscWindow;
    class Session;

    void leaveOutPendingActions();

    struct PendingAction {
        const std::function<void()>* action = nullptr;
        bool done = false;
    };

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_log;
    std::deque<PendingAction*> m_pending;
    const std::thread::id m_mainThread = std::this_thread::get_id();
    bool m_stopped = false;
    int m_code = 0;
    bool m_terminated = false;
    bool m_isOver = false;
};

}  // namespace zpk_test
