// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <memory>
#include <string>

#include "UserInterface/Desktop/ZPKApplicationMenu.h"
#include "UserInterface/Desktop/ZPKFormWindow.h"
#include "UserInterface/Desktop/ZPKReadingView.h"
#include "UserInterface/ZPKCDSearchWindow.h"

/// The window of the form `CDSearchWindow.ui`: the product's name, the request and the list, as high as the
/// list needs, and the application menu. Return presses the search button, Escape the cancel button; Quit
/// counts as the close box.
class ZPKDesktopCDSearchWindow : public ZPKDesktopWindow<ZPKCDSearchWindow> {
public:
    /// Null, after a line on standard error, when the form cannot be loaded. `menu` outlives the
    /// window.
    static std::unique_ptr<ZPKDesktopCDSearchWindow> createFromFolder(const std::string& folder,
                                                                      ZPKApplicationMenu& menu);

    void setActions(Actions actions) override;
    void setMessage(const std::string& text) override;
    void setProductList(const std::string& text) override;
    void setSearchButtonTitle(const std::string& title) override;
    void setCancelButtonTitle(const std::string& title) override;
    void setFontName(ZPKCDSearchControl control, const std::string& name) override;

private:
    struct Controls {
        QLabel* discLabel = nullptr;
        QLabel* headingLabel = nullptr;
        QLabel* textField = nullptr;
        QPlainTextEdit* textView = nullptr;
        QPushButton* cancelButton = nullptr;
        QPushButton* searchButton = nullptr;
    };

    ZPKDesktopCDSearchWindow(std::unique_ptr<QDialog> root, const Controls& controls,
                             ZPKApplicationMenu& menu);

    void prepareHeight() override;
    void heightTold() override;
    void closeBoxUsed() override;
    void escapePressed() override;
    void addMenuBar(ZPKApplicationMenu& menu);
    QWidget& control(ZPKCDSearchControl control) const;

    Controls m_controls;
    ZPKReadingView& m_products;
    Actions m_actions;
};
