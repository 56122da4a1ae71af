// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopCDSearchWindow.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLayout>
#include <QMenuBar>
#include <QStyle>
#include <utility>

#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKForm.h"
#include "UserInterface/Desktop/ZPKFormLabel.h"

namespace {

constexpr int kCharacters = 72;

/// Lines of the list.
constexpr int kFewestLines = 3;
constexpr int kMostLines = 12;

/// Where the screen has no room for more.
constexpr int kLeastLines = 2;

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
    controls.discLabel = form.find<QLabel>("discLabel");
    controls.headingLabel = form.find<QLabel>("headingLabel");
    controls.textField = form.find<QLabel>("textField");
    controls.textView = form.find<QPlainTextEdit>("textView");
    controls.cancelButton = form.find<QPushButton>("cancelButton");
    controls.searchButton = form.find<QPushButton>("searchButton");
    auto* buttons = form.find<QDialogButtonBox>("buttonBox");
    std::unique_ptr<QDialog> root = form.takeRoot<QDialog>();
    if (!form.check()) {
        return nullptr;
    }
    // The box puts them in the order that the desktop is used to.
    buttons->addButton(controls.searchButton, QDialogButtonBox::AcceptRole);
    buttons->addButton(controls.cancelButton, QDialogButtonBox::RejectRole);
    return std::unique_ptr<ZPKDesktopCDSearchWindow>(
        new ZPKDesktopCDSearchWindow(std::move(root), controls, menu));
}

ZPKDesktopCDSearchWindow::ZPKDesktopCDSearchWindow(std::unique_ptr<QDialog> root, const Controls& controls,
                                                   ZPKApplicationMenu& menu)
    : ZPKDesktopWindow(std::move(root), Size::Adjustable, kCharacters),
      m_controls(controls),
      m_products(*new ZPKReadingView(*controls.textView)) {
    const QStyle& style = *widget().style();
    const int size = style.pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &widget());
    m_controls.discLabel->setPixmap(
        style.standardIcon(QStyle::SP_DriveCDIcon, nullptr, &widget()).pixmap(size));
    for (QLabel* label : {m_controls.headingLabel, m_controls.textField}) {
        ZPKFormLabel::prepare(*label, Qt::AlignTop);
    }
    ZPKFormLabel::showProductName(*m_controls.headingLabel);
    m_controls.searchButton->setFocus();
    connect(m_controls.searchButton, &QPushButton::clicked, this, [this] { perform(m_actions.pushSearch); });
    connect(m_controls.cancelButton, &QPushButton::clicked, this, [this] { perform(m_actions.pushCancel); });
    addMenuBar(menu);
}

void ZPKDesktopCDSearchWindow::setActions(Actions actions) {
    m_actions = std::move(actions);
}

void ZPKDesktopCDSearchWindow::setMessage(const std::string& text) {
    // It has a buddy, so that an "&" would mark a key.
    m_controls.textField->setText(ZPKDesktopLabel(text));
    m_controls.textField->setAccessibleName(ZPKDesktopText(text));
    m_controls.textView->setAccessibleName(ZPKDesktopText(text));
    fitContents();
}

void ZPKDesktopCDSearchWindow::setProductList(const std::string& text) {
    m_products.setText(ZPKReadingView::isolatedLines(ZPKDesktopText(text)));
    m_controls.textView->setVisible(!text.empty());
    fitContents();
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

void ZPKDesktopCDSearchWindow::prepareHeight() {
    // By itself the list asks for the same height with any text.
    const int needed = m_products.heightForWidth(m_controls.textView->width(), kMostLines);
    m_controls.textView->setFixedHeight(qMax(needed, m_products.heightOfLines(kFewestLines)));
}

void ZPKDesktopCDSearchWindow::heightTold() {
    m_controls.textView->setMinimumHeight(m_products.heightOfLines(kLeastLines));
    m_controls.textView->setMaximumHeight(QWIDGETSIZE_MAX);
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
