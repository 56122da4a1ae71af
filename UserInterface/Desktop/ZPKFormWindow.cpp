// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKFormWindow.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QScreen>
#include <QWindow>

#include "UserInterface/Desktop/ZPKDesktopText.h"

namespace {

/// The part of the screen that a window may take, whatever its texts.
constexpr double kLargestShare = 0.8;

}  // namespace

ZPKFormWindow::ZPKFormWindow(std::unique_ptr<QWidget> root, Size size)
    : m_root(std::move(root)), m_size(size) {
    Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint;
    if (size == Size::Adjustable) {
        flags |= Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;
    }
    m_root->setWindowFlags(flags);
    m_root->setWindowModality(Qt::ApplicationModal);
    m_root->installEventFilter(this);
}

void ZPKFormWindow::bringToFront() {
    if (m_root->isVisible()) {
        m_root->raise();
    } else {
        fitContents();
        placeAboveModalWindow();
        m_root->show();
    }
    m_root->activateWindow();
}

void ZPKFormWindow::centerOnScreen() {
    m_centered = true;
    fitContents();
}

void ZPKFormWindow::setWindowTitle(const std::string& title) {
    m_root->setWindowTitle(ZPKDesktopWindowTitle(title));
    m_root->setAccessibleName(ZPKDesktopText(title));
}

void ZPKFormWindow::takeOffScreen() {
    m_root->hide();
    // The owner may block the main thread after this, and not every kind of display has been sent
    // word by now.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ZPKFormWindow::fitContents() {
    m_root->ensurePolished();
    const QRect screen = m_root->screen()->availableGeometry();
    const QSize largest = screen.size() * kLargestShare;
    QLayout* layout = m_root->layout();
    if (layout != nullptr) {
        // While a window is hidden, the layouts inside its layout do not notice new texts.
        layout->invalidate();
        layout->activate();
    }
    QSize size = m_root->sizeHint().expandedTo(m_root->minimumSize()).boundedTo(largest);
    if (layout != nullptr && layout->hasHeightForWidth()) {
        size.setHeight(qBound(size.height(), layout->totalHeightForWidth(size.width()), largest.height()));
    }
    const bool changes = size != m_root->size();
    if (m_size == Size::Fixed) {
        m_root->setFixedSize(size);
    } else {
        m_root->resize(size);
    }
    if (m_centered && (changes || !m_root->isVisible())) {
        m_root->move(screen.center() - QRect(QPoint(), size).center());
    }
}

bool ZPKFormWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close) {
        event->ignore();
        closeBoxUsed();
        return true;
    }
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Cancel)) {
        escapePressed();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void ZPKFormWindow::placeAboveModalWindow() {
    const QWidget* below = QApplication::activeModalWidget();
    if (below == nullptr || below == m_root.get() || below->windowHandle() == nullptr) {
        return;
    }
    m_root->winId();
    m_root->windowHandle()->setTransientParent(below->windowHandle());
}
