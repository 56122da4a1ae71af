#include "UserInterface/Desktop/ZPKForm.h"

#include <QFile>
#include <QUiLoader>
#include <cstdio>

#include "UserInterface/Desktop/ZPKToolkitMessages.h"

ZPKForm::ZPKForm(const QString& folder, const QString& name) : m_path(folder + QLatin1Char('/') + name) {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(file.errorString());
        return;
    }
    const ZPKToolkitMessages::Held held;
    QUiLoader loader;
    m_root.reset(loader.load(&file));
    if (!m_root) {
        fail(held.last().isEmpty() ? loader.errorString() : held.last());
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
