// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKApplicationMenu.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>

#include "UserInterface/Desktop/ZPKDesktopIdentity.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKForm.h"

namespace {

constexpr QSize kSmallestAbout(280, 80);

}  // namespace

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
    // No button: the toolkit's title for it would not be of the launcher's texts.
    QDialog box(QApplication::activeWindow());
    box.setWindowTitle(item(ZPKMenuItem::About).text().replace(QStringLiteral("&&"), QStringLiteral("&")));
    auto* label = new QLabel(ZPKDesktopText(ZPKDesktopIdentity::displayName()));
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setMinimumSize(kSmallestAbout);
    auto* layout = new QVBoxLayout(&box);
    layout->addWidget(label);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        QObject::connect(new QShortcut(key, &box), &QShortcut::activated, &box, &QDialog::accept);
    }
    box.exec();
}
