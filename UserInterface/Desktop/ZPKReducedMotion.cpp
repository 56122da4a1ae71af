// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKReducedMotion.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QStringList>
#include <utility>

#include "Base/ZPKEnvironment.h"

namespace {

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

bool isWish(const QString& group, const QString& key, const QString& value) {
    for (const Wish& wish : kWishes) {
        if (group == QLatin1String(wish.group) && key == QLatin1String(wish.key)) {
            return value == QLatin1String(wish.value);
        }
    }
    return false;
}

/// Read piece by piece: the toolkit's types for it would take more of the bundle than all the rest of this.
bool wishes(const QDBusArgument& groups) {
    bool isFound = false;
    for (groups.beginMap(); !groups.atEnd(); groups.endMapEntry()) {
        QString group;
        groups.beginMapEntry();
        groups >> group;
        for (groups.beginMap(); !groups.atEnd(); groups.endMapEntry()) {
            QString key;
            QDBusVariant value;
            groups.beginMapEntry();
            groups >> key >> value;
            isFound = isFound || isWish(group, key, value.variant().toString());
        }
        groups.endMap();
    }
    groups.endMap();
    return isFound;
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
            wishes(answer.arguments().constFirst().value<QDBusArgument>())) {
            s_isWished = true;
        }
        watcher->deleteLater();
    });
}
