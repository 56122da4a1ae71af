// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Base/ZPKMutex.h"
#include "UserInterface/Terminal/ZPKWakeUp.h"
#include "UserInterface/ZPKFrontEndBase.h"

namespace zpk_test {

/// A front end without windows: writes down what it is asked, one line each, and plays the person. Its
/// loops are those of every front end.
class ScriptedFrontEnd : private ZPKWakeUp, public ZPKFrontEndBase {
public:
    ScriptedFrontEnd();

    /// What was asked, in order, such as "progress: title=..." or "modal: begin".
    std::vector<std::string> log() const ZPK_EXCLUDES(m_mutex);

    /// Called with each line as it is logged, on the thread that logs it.
    std::function<void(const std::string&)> onLog;

    /// What a person does when the disc search window is shown modally; called repeatedly until the
    /// modal loop is stopped. Without it the person closes the window.
    std::function<void(const ZPKCDSearchWindow::Actions&)> onDiscWindow;

    /// Makes the next windows impossible, as a broken form does.
    bool formsAreBroken = false;

    void terminate() override;
    void activateIgnoringOtherApps() override;
    void setInterfaceLanguage(const std::string& code) override;
    void setDisplayName(const std::string& name) override;
    void setMenuItemTitle(ZPKMenuItem item, const std::string& title) override;
    std::unique_ptr<ZPKProgressWindow> createProgressWindow() override;
    std::unique_ptr<ZPKCDSearchWindow> createCDSearchWindow() override;
    void runAlert(const ZPKAlert& alert) override;
    void abortModal() override;
    std::unique_ptr<ZPKModalSession> beginModalSessionForWindow(ZPKWindow& window) override;

    /// Adds a line; any thread.
    void note(const std::string& line) ZPK_EXCLUDES(m_mutex);

    /// Waits until some thread has called `abortModal`.
    void waitForAbort() ZPK_EXCLUDES(m_mutex);

private:
    class Indicator;
    class ProgressWindow;
    class DiscWindow;
    class Session;

    void runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) override;
    void runLoop(ZPKModalLoop& loop) override;

    void playPerson(const DiscWindow& window, ZPKModalLoop& loop);

    mutable ZPKMutex m_mutex;
    std::condition_variable m_aborted;
    std::vector<std::string> m_log ZPK_GUARDED_BY(m_mutex);
    bool m_isAborted ZPK_GUARDED_BY(m_mutex) = false;
};

}  // namespace zpk_test
