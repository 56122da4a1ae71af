// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/preview/LauncherScenes.h"

#include <QAction>
#include <QApplication>
#include <QDeadlineTimer>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTimer>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <utility>

#include "Common/CLocalizerUtil.h"
#include "Common/ZPKCoreStringDefine.h"
#include "InstallerCore/ZPKSoftwareListText.h"
#include "UserInterface/ZPKCDSearchWindowController.h"
#include "UserInterface/ZPKProgressWindowController.h"

using namespace varno_zpk;

namespace {

/// The steps of the unpacking.
constexpr int kProgressSteps[] = {10, 40, 100};

/// Of an unpacking that takes a while.
constexpr int kLongProgress = 40;
constexpr std::chrono::seconds kLongTime{65};

constexpr int kLongestWaitMilliseconds = 60'000;
constexpr int kTickMilliseconds = 20;

/// The window that was brought to the front last.
QWidget& frontWindow() {
    QWidget* const window = QApplication::activeModalWidget();
    if (window == nullptr) {
        throw std::runtime_error("a window did not appear");
    }
    return *window;
}

/// Until everything that the window was told is in it.
void settle() {
    const QDeadlineTimer deadline(kLongestWaitMilliseconds);
    // Its ticks bound each wait.
    QTimer ticks;
    ticks.start(kTickMilliseconds);
    while (!frontWindow().isActiveWindow()) {
        if (deadline.hasExpired()) {
            throw std::runtime_error("a window did not come to the front");
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    QCoreApplication::processEvents();
}

}  // namespace

LauncherScenes::LauncherScenes(ZPKFrontEnd& frontEnd, const PictureWriter& pictures,
                               std::vector<std::string> products)
    : m_frontEnd(frontEnd),
      m_pictures(pictures),
      m_products(std::move(products)),
      m_core(frontEnd, m_volumes, m_clock) {}

void LauncherScenes::applicationDidFinishLaunching() {
    try {
        showAll();
    } catch (const std::exception& failure) {
        m_failure = failure.what();
    }
    m_frontEnd.terminate();
}

void LauncherScenes::showAll() {
    showProgress();
    showDiscWindow(m_products, "disc-search");
    showDiscWindow(m_products, "disc-search-list", Keys::InTheList);
    showDiscWindow({}, "disc-search-empty");
    showSearching();
    showMenu();
    const std::string unmet = localized(ZPKSTRING_UPDATE_FAILURE);
    showAlert(ZPKSoftwareListText(unmet, m_products), "software-list");
    showAlert(ZPKSoftwareListText(unmet, {}), "software-list-empty");
    showAlert(localized(ZPKSTRING_UPDATE_INVALID_DISC), "disc-invalid");
    showAlert(localized(ZPKSTRING_TEMPFOLDERCREATEFAILURE), "temporary-folder");
    showAlert(localized(ZPKSTRING_ERROR_INIT), "setup-not-started");
}

void LauncherScenes::showProgress() {
    ZPKProgressWindowController controller(m_frontEnd);
    if (controller.window() == nullptr) {
        throw std::runtime_error("there is no progress window");
    }
    controller.progressIndicator()->setIndeterminate(false);
    controller.setTitle(localized(ZPKSTRING_FILE_EXTRACT));
    controller.window()->makeKeyAndOrderFront();
    settle();
    for (const int percent : kProgressSteps) {
        controller.setProgressValue(percent);
        m_pictures.writeWindow(frontWindow(), "progress-" + std::to_string(percent));
    }
    controller.setProgressValue(kLongProgress);
    controller.window()->showElapsedTime(kLongTime);
    m_pictures.writeWindow(frontWindow(), "progress-time");
    controller.close();
}

void LauncherScenes::showSearching() {
    ZPKProgressWindowController controller(m_frontEnd);
    if (controller.window() == nullptr) {
        throw std::runtime_error("there is no progress window");
    }
    controller.setTitle(localized(ZPKSTRING_DISCCHECK_SERACHING));
    controller.window()->makeKeyAndOrderFront();
    settle();
    // A bar without an end moves from its first drawing on: that one is the same each time.
    controller.progressIndicator()->setIndeterminate(true);
    m_pictures.writeWindow(frontWindow(), "disc-searching");
    controller.close();
}

void LauncherScenes::showDiscWindow(const std::vector<std::string>& products, const std::string& name,
                                    Keys keys) {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {}, products);
    if (controller.window() == nullptr) {
        throw std::runtime_error("there is no disc search window");
    }
    controller.window()->makeKeyAndOrderFront();
    settle();
    if (keys == Keys::InTheList) {
        frontWindow().findChild<QPlainTextEdit*>()->setFocus();
        QCoreApplication::processEvents();
    }
    m_pictures.writeWindow(frontWindow(), name);
    controller.window()->close();
}

void LauncherScenes::showMenu() {
    ZPKCDSearchWindowController controller(m_frontEnd, m_volumes, {}, m_products);
    if (controller.window() == nullptr) {
        throw std::runtime_error("there is no disc search window");
    }
    controller.window()->makeKeyAndOrderFront();
    settle();
    auto* const bar = frontWindow().findChild<QMenuBar*>();
    if (bar == nullptr || bar->actions().isEmpty() || bar->actions().first()->menu() == nullptr) {
        throw std::runtime_error("the disc search window has no menu");
    }
    QMenu& menu = *bar->actions().first()->menu();
    menu.popup(frontWindow().pos());
    m_pictures.writeMenu(menu, "menu");
    menu.close();
    takeWhile("about", [&] { menu.actions().first()->trigger(); });
    controller.window()->close();
}

void LauncherScenes::showAlert(const std::string& text, const std::string& name) {
    takeWhile(name, [&] {
        m_frontEnd.runAlert({text, "", localized(ZPKSTRING_OK), ZPKAlertStyle::Critical});
    });
}

void LauncherScenes::takeWhile(const std::string& name, const std::function<void()>& show) {
    std::exception_ptr failure;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        // Nothing is thrown through the toolkit.
        try {
            settle();
            m_pictures.writeWindow(frontWindow(), name);
        } catch (...) {
            failure = std::current_exception();
        }
        if (QWidget* const window = QApplication::activeModalWidget()) {
            window->close();
        }
    });
    timer.start(0);
    show();
    if (failure) {
        std::rethrow_exception(failure);
    }
}
