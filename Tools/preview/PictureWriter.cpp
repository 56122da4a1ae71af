// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/preview/PictureWriter.h"

#include <fcntl.h>

#include <QApplication>
#include <QBuffer>
#include <QPainter>
#include <cerrno>
#include <stdexcept>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKPath.h"

namespace {

constexpr mode_t kFileMode = 0666;

/// In the toolkit's own units, which the screen's scale multiplies.
constexpr int kTitleHeight = 32;
constexpr int kBorder = 1;
constexpr int kTitleMargin = 12;

/// The toolkit keeps "[*]" for a mark of its own and takes it twice for the text itself.
QString titleOf(const QWidget& window) {
    return window.windowTitle().replace(QStringLiteral("[*][*]"), QStringLiteral("[*]"));
}

void drawTitle(QPainter& painter, const QRect& bar, const QWidget& window) {
    QFont font = QApplication::font();
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(window.palette().color(QPalette::WindowText));
    const QRect place = bar.adjusted(kTitleMargin, 0, -kTitleMargin, 0);
    const QString title =
        QFontMetrics(font).elidedText(titleOf(window).simplified(), Qt::ElideRight, place.width());
    painter.setLayoutDirection(QGuiApplication::layoutDirection());
    painter.drawText(place, Qt::AlignCenter | Qt::TextSingleLine, title);
}

QImage framed(QWidget& window) {
    const QPixmap contents = window.grab();
    const qreal scale = contents.devicePixelRatio();
    const QSize inner = window.size();
    const QSize outer(inner.width() + 2 * kBorder, inner.height() + kTitleHeight + kBorder);
    QImage image(outer * scale, QImage::Format_RGB32);
    if (contents.isNull() || image.isNull()) {
        return {};
    }
    image.setDevicePixelRatio(scale);
    image.fill(window.palette().color(QPalette::Mid));
    QPainter painter(&image);
    const QRect bar(kBorder, kBorder, inner.width(), kTitleHeight - kBorder);
    painter.fillRect(bar, window.palette().color(QPalette::Midlight));
    drawTitle(painter, bar, window);
    painter.drawPixmap(kBorder, kTitleHeight, contents);
    return image;
}

}  // namespace

void PictureWriter::writeWindow(QWidget& window, const std::string& name) const {
    write(framed(window), name);
}

void PictureWriter::writeMenu(QWidget& menu, const std::string& name) const {
    write(menu.grab().toImage().convertToFormat(QImage::Format_RGB32), name);
}

void PictureWriter::write(const QImage& image, const std::string& name) const {
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    if (!image.save(&bytes, "PNG")) {
        throw std::runtime_error("the window of " + name + " is too large for a picture");
    }
    const std::string path = ZPKPath::join(m_folder, name + ".png");
    ZPKFileDescriptor file(ZPKDescriptorIO::retry(
        [&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode); }));
    if (!file.isOpen() ||
        !ZPKDescriptorIO::writeWhole(file.get(), bytes.data().constData(),
                                     static_cast<std::size_t>(bytes.size())) ||
        !file.close()) {
        throw std::runtime_error(ZPKFailure::ofSystem(name + ".png", errno).message());
    }
}
