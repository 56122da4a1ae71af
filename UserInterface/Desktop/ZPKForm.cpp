// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKForm.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QUiLoader>
#include <cerrno>
#include <cstdio>
#include <optional>

#include "Base/ZPKFailure.h"
#include "Base/ZPKPath.h"
#include "Base/ZPKRegularFile.h"
#include "Base/ZPKTerminalText.h"
#include "Base/ZPKTraceText.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKToolkitMessages.h"

namespace {

/// Far more than any window needs.
constexpr std::size_t kLargestForm = std::size_t{1} << 20;

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

ZPKForm::ZPKForm(const std::string& folder, const std::string& name) : m_path(ZPKPath::join(folder, name)) {
    const std::optional<std::string> contents = ZPKRegularFile::contents(m_path, kLargestForm);
    if (!contents) {
        fail(ZPKDesktopText(ZPKFailure::systemReason(errno)));
        return;
    }
    QByteArray bytes = QByteArray::fromStdString(*contents);
    QBuffer file(&bytes);
    file.open(QIODevice::ReadOnly);
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
    std::fprintf(
        stderr, "Cannot load the form %s: %s\n", ZPKTerminalText::printable(m_path).c_str(),
        ZPKTerminalText::printable(m_failure.simplified().toStdString(), ZPKTraceText::kLongest).c_str());
    return false;
}

void ZPKForm::fail(const QString& reason) {
    if (m_failure.isEmpty()) {
        m_failure = reason.isEmpty() ? QStringLiteral("it is no form") : reason;
    }
}
