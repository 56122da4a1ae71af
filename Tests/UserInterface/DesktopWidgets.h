// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QTimer>
#include <QWidget>
#include <functional>

namespace zpk_test {

/// The visible window that holds (or is) a widget of that class and name; null without one.
template <class Widget>
Widget* findVisible(const char* name) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (!window->isVisible()) {
            continue;
        }
        auto* itself = qobject_cast<Widget*>(window);
        if (itself != nullptr && (*name == '\0' || window->objectName() == QLatin1String(name))) {
            return itself;
        }
        if (auto* widget = window->findChild<Widget*>(QLatin1String(name))) {
            return widget;
        }
    }
    return nullptr;
}

/// Has `action` run inside the next loop.
inline void inNextLoop(const std::function<void()>& action) {
    QTimer::singleShot(0, qApp, action);
}

/// Asks `widget` for a menu as the other mouse button does, in a way that waits for no menu to be closed.
inline void askForMenu(QWidget* widget) {
    const QPoint middle = widget->rect().center();
    QTimer::singleShot(0, qApp, [] {
        if (QWidget* menu = QApplication::activePopupWidget()) {
            ADD_FAILURE() << "a menu came up";
            menu->close();
        }
    });
    QContextMenuEvent event(QContextMenuEvent::Mouse, middle, widget->mapToGlobal(middle));
    QApplication::sendEvent(widget, &event);
    QApplication::processEvents();
}

}  // namespace zpk_test
