// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopAlert.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "UserInterface/Desktop/ZPKAlertPicture.h"
#include "UserInterface/Desktop/ZPKAlertTexts.h"
#include "UserInterface/Desktop/ZPKDesktopText.h"
#include "UserInterface/Desktop/ZPKFontCheck.h"
#include "UserInterface/Desktop/ZPKScreenFit.h"

namespace {

constexpr int kMargin = 20;
constexpr int kGap = 16;

QLabel* newIconLabel(const ZPKDesktopAlert& box, ZPKAlertStyle style) {
    auto* label = new QLabel;
    label->setObjectName(QStringLiteral("iconLabel"));
    label->setPixmap(ZPKAlertPicture::ofStyle(style, box));
    return label;
}

QDialogButtonBox* newButtonBox(ZPKDesktopAlert& box, const std::string& title) {
    auto* buttons = new QDialogButtonBox;
    // In a line with the texts above.
    buttons->setContentsMargins(ZPKAlertTexts::kFocusFrame, 0, ZPKAlertTexts::kFocusFrame, 0);
    QPushButton* button = buttons->addButton(ZPKDesktopLabel(title), QDialogButtonBox::AcceptRole);
    QObject::connect(button, &QPushButton::clicked, &box, &QDialog::accept);
    return buttons;
}

/// What assistive tools tell at once is of this role, which the toolkit gives to its own boxes alone.
QAccessibleInterface* describeAlert(const QString&, QObject* object) {
    auto* alert = dynamic_cast<ZPKDesktopAlert*>(object);
    return alert == nullptr ? nullptr : new QAccessibleWidget(alert, QAccessible::AlertMessage);
}

}  // namespace

ZPKDesktopAlert::ZPKDesktopAlert(const ZPKAlert& alert, const QString& windowTitle, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                          Qt::WindowCloseButtonHint) {
    QAccessible::installFactory(&describeAlert);
    setObjectName(QStringLiteral("alert"));
    setWindowModality(Qt::ApplicationModal);
    setWindowTitle(windowTitle);
    QLabel* icon = newIconLabel(*this, alert.style);
    QDialogButtonBox* buttons = newButtonBox(*this, alert.buttonTitle);
    const QSize around(2 * kMargin + kGap + icon->sizeHint().width(),
                       kMargin + 2 * kGap + buttons->sizeHint().height());
    const QString text =
        ZPKDesktopText(alert.messageText) + QStringLiteral("\n\n") + ZPKDesktopText(alert.informativeText);
    auto* texts = new ZPKAlertTexts(text, ZPKScreenFit::largestSize(*this) - around, this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kGap);
    layout->setSpacing(kGap);
    auto* upper = new QHBoxLayout;
    upper->setSpacing(kGap);
    upper->addWidget(icon, 0, Qt::AlignTop);
    upper->addWidget(texts, 1, Qt::AlignTop);
    layout->addLayout(upper);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    setMinimumWidth(ZPKScreenFit::widthOfCharacters(*this, 0));
    // It is the only one, which makes it the default one.
    findChild<QPushButton*>()->setFocus();
    ZPKFontCheck::check(*this);
    if (parent == nullptr) {
        // Left to itself, the toolkit guesses a frame larger than any and takes all of it off.
        adjustSize();
        move(ZPKScreenFit::centeredPosition(*this, size()));
    }
}

void ZPKDesktopAlert::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    QAccessibleEvent told(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}
