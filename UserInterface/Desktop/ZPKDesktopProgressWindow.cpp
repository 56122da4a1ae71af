// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopProgressWindow.h"

#include <QApplication>
#include <QBoxLayout>
#include <QEvent>
#include <QLocale>
#include <QStyle>

#include "Base/ZPKDurationText.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKForm.h"
#include "UserInterface/Desktop/ZPKFormLabel.h"
#include "UserInterface/Desktop/ZPKMirroredBar.h"
#include "UserInterface/Desktop/ZPKReducedMotion.h"

namespace {

constexpr int kCharacters = 60;
constexpr int kTickMilliseconds = 1000;

/// Who waits shorter than this asks for no time.
constexpr std::chrono::seconds kFirstSecondShown{3};

/// In the digits of that language.
QString inOwnDigits(const std::string& time, const QLocale& locale) {
    QString text = ZPKDesktopText(time);
    for (int digit = 0; digit <= 9; ++digit) {
        text.replace(QString::number(digit), locale.toString(digit));
    }
    return text;
}

}  // namespace

std::unique_ptr<ZPKDesktopProgressWindow> ZPKDesktopProgressWindow::createFromFolder(
    const std::string& folder) {
    ZPKForm form(folder, "ProgressWindow.ui");
    Controls controls;
    controls.iconLabel = form.find<QLabel>("iconLabel");
    controls.headingLabel = form.find<QLabel>("headingLabel");
    controls.bar = form.find<QProgressBar>("progressIndicator");
    controls.elapsedLabel = form.find<QLabel>("elapsedLabel");
    auto* activity = form.find<QHBoxLayout>("activityLayout");
    std::unique_ptr<QDialog> root = form.takeRoot<QDialog>();
    if (!form.check()) {
        return nullptr;
    }
    controls.mark = new ZPKBusyMark(root.get());
    activity->insertWidget(0, controls.mark);
    return std::unique_ptr<ZPKDesktopProgressWindow>(new ZPKDesktopProgressWindow(std::move(root), controls));
}

ZPKDesktopProgressWindow::ZPKDesktopProgressWindow(std::unique_ptr<QDialog> root, const Controls& controls)
    : ZPKDesktopWindow(std::move(root), Size::Fixed, kCharacters), m_controls(controls) {
    ZPKReducedMotion::askDesktop();
    const QIcon icon = QApplication::windowIcon();
    const int size = widget().style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, &widget());
    m_controls.iconLabel->setPixmap(icon.pixmap(size));
    m_controls.iconLabel->setVisible(!icon.isNull());
    ZPKFormLabel::prepare(*m_controls.headingLabel, Qt::AlignVCenter);
    ZPKFormLabel::showProductName(*m_controls.headingLabel);
    m_controls.bar->setRange(0, 100);
    m_controls.bar->installEventFilter(this);
    new ZPKMirroredBar(*m_controls.bar);
    m_controls.elapsedLabel->hide();
    m_ticks.setInterval(kTickMilliseconds);
    connect(&m_ticks, &QTimer::timeout, this,
            [this] { showElapsedTime(std::chrono::seconds(m_elapsed.elapsed() / kTickMilliseconds)); });
}

void ZPKDesktopProgressWindow::setTitle(const std::string& title) {
    setWindowTitle(title);
    m_controls.bar->setAccessibleName(ZPKDesktopText(title));
    fitContents();
}

void ZPKDesktopProgressWindow::showElapsedTime(std::chrono::seconds elapsed) {
    if (elapsed >= kFirstSecondShown) {
        m_controls.elapsedLabel->setText(inOwnDigits(ZPKDurationText(elapsed), QLocale()));
        m_controls.elapsedLabel->show();
    }
}

void ZPKDesktopProgressWindow::workBegins() {
    m_elapsed.start();
    m_ticks.start();
    m_controls.mark->start();
}

bool ZPKDesktopProgressWindow::eventFilter(QObject* watched, QEvent* event) {
    // A style whose step nobody accepts lets an endless bar stand still.
    if (event->type() == QEvent::StyleAnimationUpdate && ZPKReducedMotion::isWished()) {
        return true;
    }
    return ZPKDesktopWindow::eventFilter(watched, event);
}

void ZPKDesktopProgressWindow::updateBar() {
    // A bar without a range is the toolkit's way to say that nobody knows how long it takes.
    m_controls.bar->setRange(0, m_state.isEndless() ? 0 : 100);
    m_controls.bar->setValue(m_state.percent().value_or(0));
    m_controls.bar->update();
}
