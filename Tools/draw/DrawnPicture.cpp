// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/draw/DrawnPicture.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <QThreadPool>
#include <exception>
#include <stdexcept>

namespace {

/// What the toolkit first said that it cannot draw.
std::string& firstComplaint() {
    static std::string complaint;
    return complaint;
}

void keepComplaint(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type != QtDebugMsg && type != QtInfoMsg && firstComplaint().empty()) {
        // So it calls what it was given without a name; line and column follow.
        firstComplaint() = QString(message).remove(QStringLiteral("<input>:")).toStdString();
    }
}

bool isSeen(const QImage& image) {
    for (int y = 0; y < image.height(); ++y) {
        const QRgb* const line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(line[x]) != 0) {
                return true;
            }
        }
    }
    return false;
}

QImage drawn(const std::string& drawing, int side) {
    QSvgRenderer renderer;
    if (!renderer.load(QByteArray::fromStdString(drawing)) && firstComplaint().empty()) {
        throw std::runtime_error("it is no drawing");
    }
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(image.rect()));
    return image;
}

std::string pictureOf(const std::string& drawing, int side) {
    const QImage image = drawn(drawing, side);
    QBuffer bytes;
    const bool isSaved = isSeen(image) && bytes.open(QIODevice::WriteOnly) && image.save(&bytes, "PNG");
    if (!firstComplaint().empty()) {
        throw std::runtime_error(firstComplaint());
    }
    if (!isSaved) {
        throw std::runtime_error("there is nothing to see in it");
    }
    return bytes.data().toStdString();
}

}  // namespace

std::string DrawnPicture::ofDrawing(const std::string& drawing, int side, void (*prepare)()) {
    qInstallMessageHandler(keepComplaint);
    std::string picture;
    std::exception_ptr failure;
    // The toolkit shares large areas out to threads of this pool unless it draws in one of them, and a thread
    // opens descriptors.
    QThreadPool::globalInstance()->start([&] {
        try {
            prepare();
            picture = pictureOf(drawing, side);
        } catch (...) {
            failure = std::current_exception();
        }
    });
    QThreadPool::globalInstance()->waitForDone();
    if (failure) {
        std::rethrow_exception(failure);
    }
    return picture;
}
