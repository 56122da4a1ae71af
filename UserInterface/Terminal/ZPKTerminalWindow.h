// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

/// What the terminal's loops do with any of its windows.
class ZPKTerminalWindow {
public:
    virtual ~ZPKTerminalWindow() = default;

    /// Prints the window, unless it stands there already.
    virtual void show() = 0;

    /// The question that waits for an answer; empty for a window that asks nothing.
    virtual std::string question() const = 0;

    /// Called often while the window is there: draws anew what the time or the terminal's width has changed.
    virtual void refresh() = 0;

    /// Takes a line as the answer, or nothing when there will be none.
    virtual void takeAnswer(const std::optional<std::string>& line) = 0;
};
