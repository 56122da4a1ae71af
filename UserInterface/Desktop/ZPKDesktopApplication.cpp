// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopApplication.h"

#include <QEvent>
#include <QLocale>
#include <clocale>
#include <utility>

#include "UserInterface/Desktop/ZPKCarriedToolkit.h"
#include "UserInterface/Desktop/ZPKDesktopIdentity.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKToolkitMessages.h"
#include "UserInterface/Desktop/ZPKWindowIcon.h"

namespace {

/// The toolkit takes the arguments that it knows out of the list it is given; the launcher's own
/// list stays whole. `identifier` outlives the list.
std::vector<char*> argumentsForToolkit(const ZPKDesktopParameters& parameters, std::string& identifier) {
    static char name[] = "-name";
    std::vector<char*> arguments(parameters.argv, parameters.argv + parameters.argc);
    if (!identifier.empty() && !arguments.empty()) {
        arguments.insert(arguments.begin() + 1, {name, identifier.data()});
    }
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
    : m_identifier(parameters.identifier),
      m_arguments(argumentsForToolkit(parameters, m_identifier)),
      m_argumentCount(static_cast<int>(m_arguments.size()) - 1) {
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
    ZPKDesktopIdentity::take(parameters.identifier);
    QCoreApplication::setApplicationName(ZPKDesktopText(parameters.displayName));
    QGuiApplication::setWindowIcon(ZPKWindowIcon::ofPackage(parameters.iconPath));
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
