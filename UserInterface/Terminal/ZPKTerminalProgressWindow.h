// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "UserInterface/Terminal/ZPKTerminal.h"
#include "UserInterface/Terminal/ZPKTerminalWindow.h"
#include "UserInterface/ZPKProgressWindow.h"

/// The progress as a line: the title with the percentage, or the title once when nobody knows how
/// long it takes.
class ZPKTerminalProgressWindow : public ZPKProgressWindow,
                                  public ZPKTerminalWindow,
                                  private ZPKProgressIndicator {
public:
    /// The terminal outlives the window.
    explicit ZPKTerminalProgressWindow(ZPKTerminal& terminal) : m_terminal(terminal) {}

    ZPKProgressIndicator& progressIndicator() override { return *this; }
    void center() override {}
    void setTitle(const std::string& title) override;
    void makeKeyAndOrderFront() override { show(); }
    void close() override;

    void show() override;
    std::string question() const override { return {}; }
    void takeAnswer(const std::optional<std::string>&) override {}

private:
    void setMinValue(double value) override { m_minValue = value; }
    void setMaxValue(double value) override { m_maxValue = value; }
    void setDoubleValue(double value) override;
    void setIndeterminate(bool indeterminate) override;
    void setUsesThreadedAnimation(bool) override {}
    void startAnimation() override {}
    void stopAnimation() override {}
    void setNeedsDisplay() override { print(); }

    void print();
    std::string line() const;

    ZPKTerminal& m_terminal;
    std::string m_title;
    std::string m_printed;
    double m_minValue = 0;
    double m_maxValue = 100;
    double m_value = 0;
    bool m_hasValue = false;
    bool m_indeterminate = false;
    bool m_shown = false;
};
