// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>

#include "UserInterface/ZPKWindow.h"

/// The parts of the disc search window whose font can be chosen.
enum class ZPKCDSearchControl { TextField, TextView, CancelButton, SearchButton };

/// The window that asks for the disc, as a front end shows it: a message, a list of products and
/// two buttons, the search button being the default one. Main thread only.
class ZPKCDSearchWindow : public ZPKWindow {
public:
    /// What the window's owner does when a person uses it. All are called on the main thread.
    struct Actions {
        std::function<void()> pushSearch;
        std::function<void()> pushCancel;
        /// Asked when the close box is used; true lets the window close.
        std::function<bool()> windowShouldClose;
    };

    virtual void setActions(Actions actions) = 0;
    virtual void setMessage(const std::string& text) = 0;

    /// The product names, one a line.
    virtual void setProductList(const std::string& text) = 0;
    virtual void setSearchButtonTitle(const std::string& title) = 0;
    virtual void setCancelButtonTitle(const std::string& title) = 0;

    /// Sets the font of that family at the control's present point size; a name for which no font
    /// exists changes nothing.
    virtual void setFontName(ZPKCDSearchControl control, const std::string& name) = 0;
};
