// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <memory>
#include <string>

#include "UserInterface/Desktop/ZPKApplicationMenu.h"
#include "UserInterface/Desktop/ZPKDesktopApplication.h"
#include "UserInterface/ZPKFrontEndBase.h"

/// The front end on the desktop.
class ZPKDesktopFrontEnd : private ZPKDesktopApplication, public ZPKFrontEndBase {
public:
    explicit ZPKDesktopFrontEnd(const ZPKDesktopParameters& parameters);

    void activateIgnoringOtherApps() override;
    void setInterfaceLanguage(const std::string& code) override;
    void setMenuItemTitle(ZPKMenuItem item, const std::string& title) override;
    std::unique_ptr<ZPKProgressWindow> createProgressWindow() override;
    std::unique_ptr<ZPKCDSearchWindow> createCDSearchWindow() override;
    void runAlert(const ZPKAlert& alert) override;
    std::unique_ptr<ZPKModalSession> beginModalSessionForWindow(ZPKWindow& window) override;

private:
    bool prepare() override;
    void runLoopForWindow(ZPKWindow& window, ZPKModalLoop& loop) override;
    void runLoop(ZPKModalLoop& loop) override;

    const QString m_resourceFolder;
    std::unique_ptr<ZPKApplicationMenu> m_menu;
};
