#include "UserInterface/Desktop/ZPKDesktopAlert.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include "UserInterface/Desktop/ZPKDesktopText.h"

namespace {

/// The part of the screen that the text may take before it is scrolled.
constexpr double TextShareOfHeight = 0.5;
constexpr double TextShareOfWidth = 0.6;

QMessageBox::Icon IconOfStyle(ZPKAlertStyle style) {
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
    setIcon(IconOfStyle(alert.style));
    setTextFormat(Qt::PlainText);
    setText(ZPKDesktopText(alert.messageText));
    setInformativeText(ZPKDesktopText(alert.informativeText));
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    for (QLabel* label : findChildren<QLabel*>()) {
        label->setTextFormat(Qt::PlainText);
    }
    QPushButton* button = addButton(ZPKDesktopLabel(alert.buttonTitle), QMessageBox::AcceptRole);
    setDefaultButton(button);
    setEscapeButton(button);
    scrollLongText();
}

void ZPKDesktopAlert::scrollLongText() {
    auto* grid = qobject_cast<QGridLayout*>(layout());
    auto* label = findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    const QSize available = screen()->availableGeometry().size();
    const int limit = static_cast<int>(available.height() * TextShareOfHeight);
    if (grid == nullptr || label == nullptr || label->sizeHint().height() <= limit) {
        return;
    }
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(grid->indexOf(label), &row, &column, &rows, &columns);
    grid->removeWidget(label);
    const int width = qMin(label->sizeHint().width(), static_cast<int>(available.width() * TextShareOfWidth));
    label->setWordWrap(true);
    auto* area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidget(label);
    area->setFixedHeight(limit);
    area->setMinimumWidth(width + area->verticalScrollBar()->sizeHint().width());
    grid->addWidget(area, row, column, rows, columns);
}
