// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopCDSearchWindow.h"

#include <QFontDatabase>
#include <QLayout>
#include <QMenuBar>
#include <QStyle>
#include <QTextDocument>
#include <QTextOption>
#include <utility>

#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKForm.h"

namespace {

void perform(const std::function<void()>& action) {
    // A copy, since the action may set others.
    if (const std::function<void()> copy = action) {
        copy();
    }
}

}  // namespace

std::unique_ptr<ZPKDesktopCDSearchWindow> ZPKDesktopCDSearchWindow::createFromFolder(
    const std::string& folder, ZPKApplicationMenu& menu) {
    ZPKForm form(folder, "CDSearchWindow.ui");
    Controls controls;
    controls.textField = form.find<QLabel>("textField");
    controls.textView = form.find<QPlainTextEdit>("textView");
    controls.cancelButton = form.find<QPushButton>("cancelButton");
    controls.searchButton = form.find<QPushButton>("searchButton");
    std::unique_ptr<QDialog> root = form.takeRoot<QDialog>();
    if (!form.check()) {
        return nullptr;
    }
    return std::unique_ptr<ZPKDesktopCDSearchWindow>(
        new ZPKDesktopCDSearchWindow(std::move(root), controls, menu));
}

ZPKDesktopCDSearchWindow::ZPKDesktopCDSearchWindow(std::unique_ptr<QWidget> root, const Controls& controls,
                                                   ZPKApplicationMenu& menu)
    : ZPKDesktopWindow(std::move(root), Size::Adjustable), m_controls(controls) {
    m_controls.textField->setTextFormat(Qt::PlainText);
    m_controls.textView->setReadOnly(true);
    m_controls.searchButton->setFocus();
    connect(m_controls.searchButton, &QPushButton::clicked, this, [this] { perform(m_actions.pushSearch); });
    connect(m_controls.cancelButton, &QPushButton::clicked, this, [this] { perform(m_actions.pushCancel); });
    addMenuBar(menu);
}

void ZPKDesktopCDSearchWindow::setActions(Actions actions) {
    m_actions = std::move(actions);
}

void ZPKDesktopCDSearchWindow::setMessage(const std::string& text) {
    m_controls.textField->setText(ZPKDesktopText(text));
    m_controls.textView->setAccessibleName(ZPKDesktopText(text));
    fitContents();
}

void ZPKDesktopCDSearchWindow::setProductList(const std::string& text) {
    QTextDocument& document = *m_controls.textView->document();
    QTextOption option = document.defaultTextOption();
    option.setAlignment(QStyle::visualAlignment(widget().layoutDirection(), Qt::AlignLeft));
    document.setDefaultTextOption(option);
    m_controls.textView->setPlainText(ZPKDesktopText(text));
}

void ZPKDesktopCDSearchWindow::setSearchButtonTitle(const std::string& title) {
    m_controls.searchButton->setText(ZPKDesktopLabel(title));
    fitContents();
}

void ZPKDesktopCDSearchWindow::setCancelButtonTitle(const std::string& title) {
    m_controls.cancelButton->setText(ZPKDesktopLabel(title));
    fitContents();
}

void ZPKDesktopCDSearchWindow::setFontName(ZPKCDSearchControl control, const std::string& name) {
    const QString family = ZPKDesktopText(name);
    if (!QFontDatabase::hasFamily(family)) {
        return;
    }
    QWidget& changed = this->control(control);
    QFont font = changed.font();
    font.setFamilies({family});
    changed.setFont(font);
}

void ZPKDesktopCDSearchWindow::closeBoxUsed() {
    const std::function<bool()> shouldClose = m_actions.windowShouldClose;
    if (!shouldClose || shouldClose()) {
        this->close();
    }
}

void ZPKDesktopCDSearchWindow::escapePressed() {
    m_controls.cancelButton->click();
}

void ZPKDesktopCDSearchWindow::addMenuBar(ZPKApplicationMenu& menu) {
    auto* bar = new QMenuBar(&widget());
    bar->addMenu(&menu.menu());
    if (QLayout* layout = widget().layout()) {
        layout->setMenuBar(bar);
    }
    connect(&menu.item(ZPKMenuItem::Quit), &QAction::triggered, this, [this] { closeBoxUsed(); });
    connect(&menu.item(ZPKMenuItem::Hide), &QAction::triggered, this, [this] { widget().showMinimized(); });
}

QWidget& ZPKDesktopCDSearchWindow::control(ZPKCDSearchControl control) const {
    switch (control) {
        case ZPKCDSearchControl::TextField:
            return *m_controls.textField;
        case ZPKCDSearchControl::TextView:
            return *m_controls.textView;
        case ZPKCDSearchControl::CancelButton:
            return *m_controls.cancelButton;
        case ZPKCDSearchControl::SearchButton:
            break;
    }
    return *m_controls.searchButton;
}
