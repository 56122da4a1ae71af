// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// What every window of a front end can do. Main thread only.
class ZPKWindow {
public:
    virtual ~ZPKWindow() = default;

    virtual void center() = 0;
    virtual void setTitle(const std::string& title) = 0;
    virtual void makeKeyAndOrderFront() = 0;

    /// Takes the window off the screen. Does not end a modal loop.
    virtual void close() = 0;
};
