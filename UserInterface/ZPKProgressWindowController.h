// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>

#include "UserInterface/ZPKProgressWindow.h"

class ZPKFrontEnd;

/// The progress window: a title and a bar from 0 to 100. Main thread only.
class ZPKProgressWindowController {
public:
    /// Makes the window (not shown yet) and prepares it. The front end outlives the controller.
    explicit ZPKProgressWindowController(ZPKFrontEnd& frontEnd);

    /// The window, or null when the front end could not make it; every other operation then does
    /// nothing.
    ZPKProgressWindow* window() const { return m_window.get(); }

    void setTitle(const std::string& title);

    /// The bar, owned by the window; null without a window.
    ZPKProgressIndicator* progressIndicator() const { return _progressIndicator; }

    /// Moves the bar to `value` percent.
    void setProgressValue(double value);

    void close();

private:
    void awakeFromNib();

    std::unique_ptr<ZPKProgressWindow> m_window;
    ZPKProgressIndicator* _progressIndicator = nullptr;
};
