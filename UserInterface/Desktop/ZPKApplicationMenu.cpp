// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKApplicationMenu.h"

#include <QApplication>
#include <QMessageBox>

#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKForm.h"

std::unique_ptr<ZPKApplicationMenu> ZPKApplicationMenu::createFromFolder(const QString& folder) {
    constexpr std::array<const char*, 7> kNames = {
        "aboutAppMenuItem",   "preferencesMenuItem", "servicesMenuItem", "hideAppMenuItem",
        "hideOthersMenuItem", "showAllMenuItem",     "quitAppMenuItem",
    };
    ZPKForm form(folder, QStringLiteral("MainMenu.ui"));
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
    m_menu->setTitle(QCoreApplication::applicationName());
    QObject::connect(&item(ZPKMenuItem::About), &QAction::triggered, m_menu.get(), [this] { showAbout(); });
}

void ZPKApplicationMenu::setItemTitle(ZPKMenuItem item, const std::string& title) {
    this->item(item).setText(ZPKDesktopLabel(title));
}

void ZPKApplicationMenu::showAbout() const {
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(item(ZPKMenuItem::About).text().replace(QStringLiteral("&&"), QStringLiteral("&")));
    box.setTextFormat(Qt::PlainText);
    box.setText(QCoreApplication::applicationName());
    box.exec();
}
