// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKReducedMotion.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>
#include <utility>

#include "Base/ZPKEnvironment.h"

namespace {

using Settings = QMap<QString, QVariantMap>;

/// The one wish as each desktop writes it, and the value by which a person makes it.
struct Wish {
    const char* group;
    const char* key;
    const char* value;
};

constexpr Wish kWishes[] = {
    {"org.freedesktop.appearance", "reduced-motion", "1"},
    {"org.gnome.desktop.interface", "enable-animations", "false"},
    {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0"},
};

QDBusMessage question() {
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("ReadAll"));
    QStringList groups;
    for (const Wish& wish : kWishes) {
        groups += QLatin1String(wish.group);
    }
    message << groups;
    // Where the desktop has no such service running, none is to be started for this.
    message.setAutoStartService(false);
    return message;
}

bool wishes(const Settings& settings) {
    for (const Wish& wish : kWishes) {
        const QVariant value = settings.value(QLatin1String(wish.group)).value(QLatin1String(wish.key));
        if (value.isValid() && value.toString() == QLatin1String(wish.value)) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool ZPKReducedMotion::s_isWished = false;

void ZPKReducedMotion::askDesktop() {
    static bool isAsked = false;
    // A bus that nobody named would be started.
    if (std::exchange(isAsked, true) || !ZPKEnvironment::isSet("DBUS_SESSION_BUS_ADDRESS")) {
        return;
    }
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question()), qApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher] {
        const QDBusMessage answer = watcher->reply();
        if (answer.type() == QDBusMessage::ReplyMessage && answer.signature() == QLatin1String("a{sa{sv}}") &&
            wishes(qdbus_cast<Settings>(answer.arguments().constFirst()))) {
            s_isWished = true;
        }
        watcher->deleteLater();
    });
}
