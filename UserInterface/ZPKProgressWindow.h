// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include "UserInterface/ZPKProgressIndicator.h"
#include "UserInterface/ZPKWindow.h"

/// The window with a progress bar, as a front end shows it. Main thread only.
class ZPKProgressWindow : public ZPKWindow {
public:
    /// The bar, owned by the window.
    virtual ZPKProgressIndicator& progressIndicator() = 0;
};
