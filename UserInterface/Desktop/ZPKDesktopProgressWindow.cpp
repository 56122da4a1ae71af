// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopProgressWindow.h"

#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKForm.h"

std::unique_ptr<ZPKDesktopProgressWindow> ZPKDesktopProgressWindow::createFromFolder(
    const std::string& folder) {
    ZPKForm form(folder, "ProgressWindow.ui");
    auto* label = form.find<QLabel>("titleLabel");
    auto* bar = form.find<QProgressBar>("progressIndicator");
    std::unique_ptr<QWidget> root = form.takeRoot<QWidget>();
    if (!form.check()) {
        return nullptr;
    }
    return std::unique_ptr<ZPKDesktopProgressWindow>(
        new ZPKDesktopProgressWindow(std::move(root), label, bar));
}

ZPKDesktopProgressWindow::ZPKDesktopProgressWindow(std::unique_ptr<QWidget> root, QLabel* label,
                                                   QProgressBar* bar)
    : ZPKDesktopWindow(std::move(root), Size::Fixed), m_label(label), m_bar(bar) {
    m_label->setTextFormat(Qt::PlainText);
    m_bar->setRange(0, 100);
}

void ZPKDesktopProgressWindow::setTitle(const std::string& title) {
    setWindowTitle(title);
    m_label->setText(ZPKDesktopText(title));
    m_bar->setAccessibleName(ZPKDesktopText(title));
    fitContents();
}

void ZPKDesktopProgressWindow::updateBar() {
    // A bar without a range is the toolkit's way to say that nobody knows how long it takes.
    m_bar->setRange(0, m_state.isEndless() ? 0 : 100);
    m_bar->setValue(m_state.percent().value_or(0));
    m_bar->update();
}
