// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "UserInterface/Terminal/ZPKTerminal.h"
#include "UserInterface/Terminal/ZPKTerminalWindow.h"
#include "UserInterface/ZPKCDSearchWindow.h"

/// The request for the disc as a question with two numbered answers, the first one by Enter alone. One answer
/// a line, so that a terminal that turns Arabic and Hebrew around does not exchange them. No answer counts as
/// Cancel.
class ZPKTerminalCDSearchWindow : public ZPKCDSearchWindow, public ZPKTerminalWindow {
public:
    /// The terminal outlives the window.
    explicit ZPKTerminalCDSearchWindow(ZPKTerminal& terminal) : m_terminal(terminal) {}

    void setActions(Actions actions) override;
    void setMessage(const std::string& text) override { m_message = text; }
    void setProductList(const std::string& text) override { m_productList = text; }
    void setSearchButtonTitle(const std::string& title) override { m_searchTitle = title; }
    void setCancelButtonTitle(const std::string& title) override { m_cancelTitle = title; }
    void setFontName(ZPKCDSearchControl, const std::string&) override {}
    void center() override {}
    void setTitle(const std::string& title) override { m_title = title; }
    void makeKeyAndOrderFront() override { show(); }
    void close() override { m_shown = false; }

    void show() override;
    std::string question() const override;
    void refresh() override { m_terminal.refold(); }
    void takeAnswer(const std::optional<std::string>& line) override;

private:
    ZPKTerminal& m_terminal;
    Actions m_actions;
    std::string m_title;
    std::string m_message;
    std::string m_productList;
    std::string m_searchTitle;
    std::string m_cancelTitle;
    bool m_shown = false;
};
