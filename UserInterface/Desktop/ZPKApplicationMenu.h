// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QAction>
#include <QMenu>
#include <array>
#include <memory>
#include <string>

#include "UserInterface/ZPKFrontEnd.h"

/// The application menu of the form `MainMenu.ui`. The items that can do nothing on this desktop are not in
/// the menu, but have their titles. Main thread only.
class ZPKApplicationMenu {
public:
    /// Null, after a line on standard error, when the form cannot be loaded.
    static std::unique_ptr<ZPKApplicationMenu> createFromFolder(const std::string& folder);

    QMenu& menu() const { return *m_menu; }
    QAction& item(ZPKMenuItem item) const { return *m_items[static_cast<std::size_t>(item)]; }
    void setTitle(const std::string& title);
    void setItemTitle(ZPKMenuItem item, const std::string& title);

private:
    using Items = std::array<QAction*, 7>;

    ZPKApplicationMenu(std::unique_ptr<QMenu> menu, const Items& items);

    void showAbout() const;

    std::unique_ptr<QMenu> m_menu;
    Items m_items;
};
