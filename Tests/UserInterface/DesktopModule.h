// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>

#include "UserInterface/ZPKDesktopPlugIn.h"
#include "UserInterface/ZPKFrontEnd.h"

namespace zpk_test {

/// The folder with the window forms as they are delivered.
std::string deliveredForms();

/// What the launcher would hand over, with the delivered forms.
ZPKDesktopParameters desktopParameters();

/// Opens the module as the launcher does. Null when it says that there is no display; fails the test
/// when the module itself cannot be opened.
std::unique_ptr<ZPKFrontEnd> openDesktop(const ZPKDesktopParameters& parameters);

/// The same with the usual parameters; fails the test when there is no display.
std::unique_ptr<ZPKFrontEnd> openDesktop();

}  // namespace zpk_test
