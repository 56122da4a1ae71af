// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKFormWindow.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QWindow>
#include <utility>

#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKFontCheck.h"
#include "UserInterface/Desktop/ZPKScreenFit.h"

namespace {

/// What is over sooner is not seen as anything but a flash.
constexpr int kAppearanceMilliseconds = 300;

/// While a window is hidden, the layouts inside its layout do not notice new texts and sizes.
void lookAgain(QWidget& window) {
    for (QWidget* child : window.findChildren<QWidget*>()) {
        if (QLayout* layout = child->layout()) {
            layout->invalidate();
            child->updateGeometry();
        }
    }
    window.layout()->invalidate();
    window.layout()->activate();
}

}  // namespace

ZPKFormWindow::ZPKFormWindow(std::unique_ptr<QDialog> root, Size size, int characters)
    : m_root(std::move(root)), m_size(size), m_characters(characters) {
    m_appearance.setSingleShot(true);
    m_appearance.setInterval(kAppearanceMilliseconds);
    connect(&m_appearance, &QTimer::timeout, this, [this] { bringToFrontAtOnce(); });
    Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint;
    if (size == Size::Adjustable) {
        flags |= Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;
    }
    m_root->setWindowFlags(flags);
    m_root->setWindowModality(Qt::ApplicationModal);
    m_root->installEventFilter(this);
}

void ZPKFormWindow::bringToFront() {
    if (m_root->isVisible() || QApplication::activeModalWidget() == nullptr) {
        bringToFrontAtOnce();
    } else if (!m_appearance.isActive()) {
        m_appearance.start();
    }
}

void ZPKFormWindow::bringToFrontAtOnce() {
    m_appearance.stop();
    if (m_root->isVisible()) {
        m_root->raise();
    } else {
        fitContents();
        placeAboveModalWindow();
        ZPKFontCheck::check(*m_root);
        if (m_size == Size::Adjustable && QGuiApplication::platformName() == QLatin1String("wayland")) {
            holdHeightUntilShown();
        }
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
    m_appearance.stop();
    m_root->hide();
    // The owner may block the main thread after this, and not every kind of display has been sent
    // word by now.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ZPKFormWindow::fitContents() {
    const QSize size = sizeOfContents();
    const bool changes = size != m_root->size();
    if (m_size == Size::Fixed) {
        m_root->setFixedSize(size);
    } else {
        m_root->resize(size);
    }
    if (m_centered && (changes || !m_root->isVisible())) {
        m_root->move(ZPKScreenFit::centeredPosition(*m_root, size));
    }
}

QSize ZPKFormWindow::sizeOfContents() {
    m_root->ensurePolished();
    const QSize largest = ZPKScreenFit::largestSize(*m_root);
    const int characters = ZPKScreenFit::widthOfCharacters(*m_root, m_characters);
    QLayout* layout = m_root->layout();
    if (layout == nullptr) {
        return m_root->sizeHint().boundedTo(largest);
    }
    lookAgain(*m_root);
    const int width = qMin(qMax(characters, layout->totalMinimumSize().width()), largest.width());
    layout->setGeometry(QRect(0, 0, width, largest.height()));
    prepareHeight();
    lookAgain(*m_root);
    const int height =
        layout->hasHeightForWidth() ? layout->totalHeightForWidth(width) : layout->totalSizeHint().height();
    heightTold();
    lookAgain(*m_root);
    return QSize(width, height).boundedTo(largest);
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
    if (event->type() == QEvent::Expose && watched == m_root->windowHandle() && m_release) {
        // The compositor decides when it is sent what the window shows first, which is done in this event.
        QTimer::singleShot(0, this, std::exchange(m_release, nullptr));
    }
    return QObject::eventFilter(watched, event);
}

/// X11 has a word for dialogs. To a compositor that tiles, one is what cannot be as high as it wants.
void ZPKFormWindow::holdHeightUntilShown() {
    const int least = m_root->minimumHeight();
    m_root->setFixedHeight(m_root->height());
    m_root->winId();
    m_root->windowHandle()->installEventFilter(this);
    m_release = [this, least] {
        m_root->setMinimumHeight(least);
        m_root->setMaximumHeight(QWIDGETSIZE_MAX);
    };
}

void ZPKFormWindow::placeAboveModalWindow() {
    const QWidget* below = QApplication::activeModalWidget();
    if (below == nullptr || below == m_root.get() || below->windowHandle() == nullptr) {
        return;
    }
    m_root->winId();
    m_root->windowHandle()->setTransientParent(below->windowHandle());
}
