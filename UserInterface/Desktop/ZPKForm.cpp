// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKForm.h"

#include <QCoreApplication>
#include <QFile>
#include <QUiLoader>
#include <cstdio>

#include "UserInterface/Desktop/ZPKToolkitMessages.h"

namespace {

/// A loader looks for further widget classes in the toolkit's plug-in folders, and loads whatever
/// lies there. The forms use none, so it is made while there are no such folders.
std::unique_ptr<QUiLoader> makeLoader() {
    const QStringList paths = QCoreApplication::libraryPaths();
    QCoreApplication::setLibraryPaths({});
    auto loader = std::make_unique<QUiLoader>();
    QCoreApplication::setLibraryPaths(paths);
    return loader;
}

}  // namespace

ZPKForm::ZPKForm(const QString& folder, const QString& name) : m_path(folder + QLatin1Char('/') + name) {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(file.errorString());
        return;
    }
    const ZPKToolkitMessages::Held held;
    const std::unique_ptr<QUiLoader> loader = makeLoader();
    m_root.reset(loader->load(&file));
    if (!m_root) {
        fail(held.last().isEmpty() ? loader->errorString() : held.last());
    }
}

bool ZPKForm::check() const {
    if (m_failure.isEmpty()) {
        return true;
    }
    std::fprintf(stderr, "Cannot load the form %s: %s\n", m_path.toUtf8().constData(),
                 m_failure.simplified().toUtf8().constData());
    return false;
}

void ZPKForm::fail(const QString& reason) {
    if (m_failure.isEmpty()) {
        m_failure = reason.isEmpty() ? QStringLiteral("it is no form") : reason;
    }
}
