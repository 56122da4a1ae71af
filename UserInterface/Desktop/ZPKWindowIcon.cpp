// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKWindowIcon.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QPixmap>
#include <QPolygonF>
#include <algorithm>
#include <optional>

#include "Base/ZPKRegularFile.h"

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20;
constexpr int kLargestSide = 1024;

constexpr QLatin1String kThemedName("system-software-install");

/// What task bars and window lists ask for, twice as large ones included. X11 is sent them all.
constexpr int kSides[] = {16, 22, 24, 32, 48, 64, 96, 128};

QImage pictureAt(const std::string& path) {
    const std::optional<std::string> bytes = ZPKRegularFile::contents(path, kLargestFile);
    if (!bytes) {
        return {};
    }
    QByteArray data = QByteArray::fromStdString(*bytes);
    QBuffer buffer(&data);
    QImageReader reader(&buffer, "PNG");
    const QSize size = reader.size();
    if (std::max(size.width(), size.height()) > kLargestSide) {
        return {};
    }
    return reader.read();
}

/// A box that an arrow points into, on a field of 16 by 16.
void drawBox(QPainter& painter) {
    constexpr QColor kBox(193, 138, 77);
    constexpr QColor kLid(222, 176, 119);
    constexpr QColor kArrow(38, 110, 180);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kBox);
    painter.drawRect(QRectF(2, 9, 12, 6));
    painter.setBrush(kLid);
    painter.drawPolygon(QPolygonF({{2, 9}, {4, 6.5}, {12, 6.5}, {14, 9}}));
    painter.setBrush(kArrow);
    painter.drawPolygon(QPolygonF({{6.5, 1}, {9.5, 1}, {9.5, 6}, {12, 6}, {8, 11}, {4, 6}, {6.5, 6}}));
}

QIcon drawn() {
    constexpr qreal kField = 16;
    QIcon icon;
    for (const int side : kSides) {
        QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.scale(side / kField, side / kField);
        drawBox(painter);
        painter.end();
        icon.addPixmap(QPixmap::fromImage(image));
    }
    return icon;
}

bool isPictureIn(const QString& folder) {
    return QFileInfo::exists(folder + kThemedName + QLatin1String(".png")) ||
           QFileInfo::exists(folder + kThemedName + QLatin1String(".xpm"));
}

/// The theme of a desktop that has none of its own is the one to which every program adds its icon. It seldom
/// has this one, and reading its long index takes a quarter of the start.
bool mayDesktopHaveOne() {
    const QString common = QStringLiteral("hicolor");
    if (QIcon::themeName() != common) {
        return true;
    }
    for (const QString& path : QIcon::themeSearchPaths()) {
        const QDir theme(path + QLatin1Char('/') + common);
        for (const QString& size : theme.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            if (isPictureIn(theme.filePath(size) + QStringLiteral("/apps/"))) {
                return true;
            }
        }
    }
    const QStringList others = QIcon::fallbackSearchPaths();
    return std::any_of(others.begin(), others.end(),
                       [](const QString& path) { return isPictureIn(path + QLatin1Char('/')); });
}

QIcon ofDesktop() {
    return mayDesktopHaveOne() ? QIcon::fromTheme(QString(kThemedName)) : QIcon();
}

}  // namespace

QIcon ZPKWindowIcon::ofPackage(const std::string& path) {
    const QImage picture = pictureAt(path);
    if (picture.isNull()) {
        const QIcon themed = ofDesktop();
        return themed.availableSizes().isEmpty() ? drawn() : themed;
    }
    QIcon icon;
    for (const int side : kSides) {
        icon.addPixmap(
            QPixmap::fromImage(picture.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    }
    return icon;
}
