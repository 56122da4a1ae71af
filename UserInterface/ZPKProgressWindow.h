// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>

#include "UserInterface/ZPKProgressIndicator.h"
#include "UserInterface/ZPKWindow.h"

/// The window with a progress bar, as a front end shows it. Main thread only.
class ZPKProgressWindow : public ZPKWindow {
public:
    /// The bar, owned by the window.
    virtual ZPKProgressIndicator& progressIndicator() = 0;

    /// Tells how long the work has gone on, where the front end has a place for that. A window that a modal
    /// loop or session runs for does it by itself.
    virtual void showElapsedTime(std::chrono::seconds) {}
};
