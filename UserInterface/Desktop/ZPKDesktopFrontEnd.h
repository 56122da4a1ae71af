// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDialog>
#include <QEventLoop>
#include <memory>
#include <string>

#include "UserInterface/Desktop/ZPKApplicationMenu.h"
#include "UserInterface/Desktop/ZPKDesktopApplication.h"
#include "UserInterface/ZPKFrontEndBase.h"

/// The front end on the desktop.
class ZPKDesktopFrontEnd : private ZPKDesktopApplication, public ZPKFrontEndBase {
public:
    explicit ZPKDesktopFrontEnd(const ZPKDesktopParameters& parameters);

    void terminate() override;
    void activateIgnoringOtherApps() override;
    void setInterfaceLanguage(const std::string& code) override;
    void setDisplayName(const std::string& name) override;
    void setMenuItemTitle(ZPKMenuItem item, const std::string& title) override;
    std::unique_ptr<ZPKProgressWindow> createProgressWindow() override;
    std::unique_ptr<ZPKCDSearchWindow> createCDSearchWindow() override;
    std::unique_ptr<ZPKExpectedProgram> expectProgram(const std::string& path) override;
    void runAlert(const ZPKAlert& alert) override;
    std::unique_ptr<ZPKModalSession> beginModalSessionForWindow(ZPKWindow& window) override;

private:
    friend class ZPKDesktopModalSession;

    bool prepare() override;
    void runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) override;
    void runLoop(ZPKModalLoop& loop) override;

    /// Notices inside a session what only the end of the toolkit's own loop would tell.
    void terminateIfToolkitQuits();

    const std::string m_resourceFolder;
    std::unique_ptr<ZPKApplicationMenu> m_menu;
    /// The innermost loop of the toolkit that this front end runs.
    const QEventLoop* m_events = nullptr;

    /// The alert that is shown now, or null.
    QDialog* m_alert = nullptr;
};
