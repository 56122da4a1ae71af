// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopFrontEnd.h"

#include <QApplication>
#include <QEventLoop>
#include <QScopeGuard>
#include <QTimer>
#include <utility>

#include "UserInterface/Desktop/ZPKActivationToken.h"
#include "UserInterface/Desktop/ZPKDesktopAlert.h"
#include "UserInterface/Desktop/ZPKDesktopCDSearchWindow.h"
#include "UserInterface/Desktop/ZPKDesktopIdentity.h"
#include "UserInterface/Desktop/ZPKDesktopProgressWindow.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKStartupNotice.h"

namespace {

constexpr int kSessionWaitMilliseconds = 20;

/// Every window comes from this front end.
ZPKFormWindow& formWindow(ZPKWindow& window) {
    return dynamic_cast<ZPKFormWindow&>(window);
}

}  // namespace

class ZPKDesktopModalSession : public ZPKModalSession {
public:
    explicit ZPKDesktopModalSession(ZPKDesktopFrontEnd& frontEnd) : m_frontEnd(frontEnd) {
        m_timer.start(kSessionWaitMilliseconds);
    }

    bool run() override {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        m_frontEnd.terminateIfToolkitQuits();
        return !m_frontEnd.isLoopStopped();
    }

private:
    ZPKDesktopFrontEnd& m_frontEnd;
    /// Its ticks bound the wait.
    QTimer m_timer;
};

ZPKDesktopFrontEnd::ZPKDesktopFrontEnd(const ZPKDesktopParameters& parameters)
    : ZPKDesktopApplication(parameters),
      ZPKFrontEndBase([this] { postToMainThread([this] { runPendingActions(); }); }),
      m_resourceFolder(parameters.resourceFolder) {}

bool ZPKDesktopFrontEnd::prepare() {
    m_menu = ZPKApplicationMenu::createFromFolder(m_resourceFolder);
    return m_menu != nullptr;
}

void ZPKDesktopFrontEnd::terminate() {
    ZPKFrontEndBase::terminate();
    // An alert has a loop of its own, and nobody is left to answer it.
    if (m_alert != nullptr) {
        m_alert->reject();
    }
}

void ZPKDesktopFrontEnd::activateIgnoringOtherApps() {
    if (QWidget* window = QApplication::activeModalWidget()) {
        window->raise();
        window->activateWindow();
    }
}

void ZPKDesktopFrontEnd::setInterfaceLanguage(const std::string& code) {
    setLanguage(code);
}

void ZPKDesktopFrontEnd::setDisplayName(const std::string& name) {
    QCoreApplication::setApplicationName(ZPKDesktopText(name));
    if (m_menu) {
        m_menu->setTitle(name);
    }
}

void ZPKDesktopFrontEnd::setMenuItemTitle(ZPKMenuItem item, const std::string& title) {
    if (m_menu) {
        m_menu->setItemTitle(item, title);
    }
}

std::unique_ptr<ZPKProgressWindow> ZPKDesktopFrontEnd::createProgressWindow() {
    std::unique_ptr<ZPKProgressWindow> window = ZPKDesktopProgressWindow::createFromFolder(m_resourceFolder);
    if (!window) {
        noteFailure();
    }
    return window;
}

std::unique_ptr<ZPKCDSearchWindow> ZPKDesktopFrontEnd::createCDSearchWindow() {
    std::unique_ptr<ZPKCDSearchWindow> window;
    if (m_menu) {
        window = ZPKDesktopCDSearchWindow::createFromFolder(m_resourceFolder, *m_menu);
    }
    if (!window) {
        noteFailure();
    }
    return window;
}

std::unique_ptr<ZPKExpectedProgram> ZPKDesktopFrontEnd::expectProgram(const std::string& path) {
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        return ZPKStartupNotice::send(path, ZPKDesktopIdentity::displayName());
    }
    return ZPKActivationToken::request();
}

void ZPKDesktopFrontEnd::runAlert(const ZPKAlert& alert) {
    ZPKDesktopAlert box(alert, ZPKDesktopWindowTitle(ZPKDesktopIdentity::displayName()),
                        QApplication::activeModalWidget());
    const auto restored = qScopeGuard([this, around = std::exchange(m_alert, &box)] { m_alert = around; });
    box.exec();
}

std::unique_ptr<ZPKModalSession> ZPKDesktopFrontEnd::beginModalSessionForWindow(ZPKWindow& window) {
    formWindow(window).bringToFront();
    formWindow(window).workBegins();
    return std::make_unique<ZPKDesktopModalSession>(*this);
}

void ZPKDesktopFrontEnd::runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) {
    formWindow(window).bringToFrontAtOnce();
    formWindow(window).workBegins();
    runLoop(loop);
    // The owner may block the main thread after this, and not every kind of display has been sent the
    // window's last state by now.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ZPKDesktopFrontEnd::runLoop(ZPKModalLoop& loop) {
    QEventLoop events;
    const auto restored =
        qScopeGuard([this, around = std::exchange(m_events, &events)] { m_events = around; });
    loop.setLeave([&events] { events.quit(); });
    if (!loop.isStopped()) {
        events.exec();
    }
    if (!loop.isStopped()) {
        // The toolkit itself was told to quit, by the end of the person's session for instance.
        terminate();
    }
}

void ZPKDesktopFrontEnd::terminateIfToolkitQuits() {
    if (m_events != nullptr && !m_events->isRunning() && !isLoopStopped()) {
        terminate();
    }
}
