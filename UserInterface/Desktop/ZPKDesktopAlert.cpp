// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDesktopAlert.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>

#include "UserInterface/Desktop/ZPKDesktopText.h"

namespace {

/// What the toolkit calls the label of the text; that of the informative text has another name.
constexpr const char* kTextLabel = "qt_msgbox_label";

/// The parts of the screen that the texts may take before they are scrolled.
constexpr double kTextShareOfHeight = 0.5;
constexpr double kInformativeShareOfHeight = 0.2;
constexpr double kTextShareOfWidth = 0.6;

QMessageBox::Icon iconOfStyle(ZPKAlertStyle style) {
    switch (style) {
        case ZPKAlertStyle::Warning:
            return QMessageBox::Warning;
        case ZPKAlertStyle::Informational:
            return QMessageBox::Information;
        case ZPKAlertStyle::Critical:
            break;
    }
    return QMessageBox::Critical;
}

}  // namespace

ZPKDesktopAlert::ZPKDesktopAlert(const ZPKAlert& alert, const QString& windowTitle, QWidget* parent)
    : QMessageBox(parent) {
    setWindowModality(Qt::ApplicationModal);
    setWindowTitle(windowTitle);
    setIcon(iconOfStyle(alert.style));
    setTextFormat(Qt::PlainText);
    setText(ZPKDesktopText(alert.messageText));
    setInformativeText(ZPKDesktopText(alert.informativeText));
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    for (QLabel* label : findChildren<QLabel*>()) {
        label->setTextFormat(Qt::PlainText);
        // Each line would stand at the side that its own letters begin at.
        label->setAlignment(QStyle::visualAlignment(layoutDirection(), label->alignment()));
        scrollLongText(*label, label->objectName() == QLatin1String(kTextLabel) ? kTextShareOfHeight
                                                                                : kInformativeShareOfHeight);
    }
    QPushButton* button = addButton(ZPKDesktopLabel(alert.buttonTitle), QMessageBox::AcceptRole);
    setDefaultButton(button);
    setEscapeButton(button);
}

void ZPKDesktopAlert::scrollLongText(QLabel& label, double shareOfHeight) {
    auto* grid = qobject_cast<QGridLayout*>(layout());
    if (grid == nullptr || grid->indexOf(&label) < 0) {
        return;
    }
    label.setWordWrap(true);
    const QSize available = screen()->availableGeometry().size();
    const int widest = static_cast<int>(available.width() * kTextShareOfWidth);
    const int highest = static_cast<int>(available.height() * shareOfHeight);
    const int width = qMin(label.sizeHint().width(), widest);
    if (label.minimumSizeHint().width() <= widest && label.heightForWidth(width) <= highest) {
        return;
    }
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(grid->indexOf(&label), &row, &column, &rows, &columns);
    grid->removeWidget(&label);
    auto* area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidget(&label);
    // It takes the keys that scroll, so a screen reader comes to it.
    area->setAccessibleName(windowTitle());
    const int bar = area->verticalScrollBar()->sizeHint().width();
    area->setFixedSize(width + bar, qMin(label.heightForWidth(width) + bar, highest));
    grid->addWidget(area, row, column, rows, columns);
}
