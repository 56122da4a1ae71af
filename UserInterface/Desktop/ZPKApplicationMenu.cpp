// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKApplicationMenu.h"

#include <QApplication>

#include "UserInterface/Desktop/ZPKAboutBox.h"
#include "UserInterface/Desktop/ZPKDesktopIdentity.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKFontCheck.h"
#include "UserInterface/Desktop/ZPKForm.h"

std::unique_ptr<ZPKApplicationMenu> ZPKApplicationMenu::createFromFolder(const std::string& folder) {
    constexpr std::array<const char*, 7> kNames = {
        "aboutAppMenuItem",   "preferencesMenuItem", "servicesMenuItem", "hideAppMenuItem",
        "hideOthersMenuItem", "showAllMenuItem",     "quitAppMenuItem",
    };
    ZPKForm form(folder, "MainMenu.ui");
    Items items{};
    for (std::size_t at = 0; at < kNames.size(); ++at) {
        items[at] = form.find<QAction>(kNames[at]);
    }
    std::unique_ptr<QMenu> menu = form.takeRoot<QMenu>();
    if (!form.check()) {
        return nullptr;
    }
    return std::unique_ptr<ZPKApplicationMenu>(new ZPKApplicationMenu(std::move(menu), items));
}

ZPKApplicationMenu::ZPKApplicationMenu(std::unique_ptr<QMenu> menu, const Items& items)
    : m_menu(std::move(menu)), m_items(items) {
    setTitle(ZPKDesktopIdentity::displayName());
    QObject::connect(&item(ZPKMenuItem::About), &QAction::triggered, m_menu.get(), [this] { showAbout(); });
}

void ZPKApplicationMenu::setTitle(const std::string& title) {
    m_menu->setTitle(ZPKDesktopLabel(title));
}

void ZPKApplicationMenu::setItemTitle(ZPKMenuItem item, const std::string& title) {
    this->item(item).setText(ZPKDesktopLabel(title));
}

void ZPKApplicationMenu::showAbout() const {
    const QString title = item(ZPKMenuItem::About).text().replace(QStringLiteral("&&"), QStringLiteral("&"));
    ZPKAboutBox box(title, QApplication::activeWindow());
    ZPKFontCheck::check(box);
    box.exec();
}
