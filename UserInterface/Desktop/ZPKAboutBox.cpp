// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKAboutBox.h"

#include <QApplication>
#include <QLabel>
#include <QShortcut>
#include <QStyle>
#include <QVBoxLayout>

#include "UserInterface/Desktop/ZPKFormLabel.h"
#include "UserInterface/Desktop/ZPKScreenFit.h"

namespace {

constexpr int kCharacters = 36;
constexpr int kMargin = 24;
constexpr double kHeadingScale = 1.3;

QLabel* addLabel(QVBoxLayout& layout, const char* name) {
    auto* label = new QLabel;
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignHCenter);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout.addWidget(label);
    return label;
}

}  // namespace

ZPKAboutBox::ZPKAboutBox(const QString& title, QWidget* parent) : QDialog(parent) {
    setWindowTitle(title);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    const QIcon icon = QApplication::windowIcon();
    if (!icon.isNull()) {
        const int size = 2 * style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
        addLabel(*layout, "iconLabel")->setPixmap(icon.pixmap(size));
    }
    QLabel* heading = addLabel(*layout, "headingLabel");
    QFont font = heading->font();
    font.setPointSizeF(font.pointSizeF() * kHeadingScale);
    heading->setFont(font);
    ZPKFormLabel::showProductName(*heading);
    // No text to translate, and no button: the toolkit's title for it would not be of the launcher's texts.
    addLabel(*layout, "versionLabel")->setText(QStringLiteral("Zephyrkit " ZPK_VERSION));
    layout->setSizeConstraint(QLayout::SetFixedSize);
    heading->setFixedWidth(qMax(ZPKScreenFit::widthOfCharacters(*this, kCharacters) - 2 * kMargin,
                                heading->minimumSizeHint().width()));
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        QObject::connect(new QShortcut(key, this), &QShortcut::activated, this, &QDialog::accept);
    }
}
