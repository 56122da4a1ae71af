// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopApplication.h"

#include <QEvent>
#include <QLocale>
#include <clocale>
#include <utility>

#include "UserInterface/Desktop/ZPKCarriedToolkit.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKToolkitMessages.h"

namespace {

/// The toolkit takes the arguments that it knows out of the list it is given; the launcher's own
/// list stays whole.
std::vector<char*> copyOfArguments(const ZPKDesktopParameters& parameters) {
    std::vector<char*> arguments(parameters.argv, parameters.argv + parameters.argc);
    arguments.push_back(nullptr);
    return arguments;
}

/// The toolkit puts menus of its own wording behind the other mouse button: there are none.
class ContextMenuFilter : public QObject {
    using QObject::QObject;

    bool eventFilter(QObject*, QEvent* event) override { return event->type() == QEvent::ContextMenu; }
};

}  // namespace

ZPKDesktopApplication::ZPKDesktopApplication(const ZPKDesktopParameters& parameters)
    : m_arguments(copyOfArguments(parameters)), m_argumentCount(parameters.argc) {
    const ZPKToolkitMessages::Start start(parameters.runWithoutDesktop);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (!parameters.frameworks.empty()) {
        ZPKCarriedToolkit::usePlugIns(parameters.frameworks);
    }
    m_application = std::make_unique<QApplication>(m_argumentCount, m_arguments.data());
    QCoreApplication::instance()->installEventFilter(new ContextMenuFilter(m_application.get()));
    if (!parameters.frameworks.empty()) {
        ZPKCarriedToolkit::useFontWhereThereIsNone(parameters.frameworks);
    }
    QCoreApplication::setApplicationName(ZPKDesktopText(parameters.applicationName));
    // The toolkit sets the person's number format for the whole process, where the core reads and
    // writes numbers of its own.
    std::setlocale(LC_NUMERIC, "C");
}

void ZPKDesktopApplication::postToMainThread(std::function<void()> action) {
    QMetaObject::invokeMethod(&m_receiver, std::move(action), Qt::QueuedConnection);
}

void ZPKDesktopApplication::setLanguage(const std::string& code) {
    const QLocale locale(ZPKDesktopText(code));
    QLocale::setDefault(locale);
    QGuiApplication::setLayoutDirection(locale.textDirection());
}
