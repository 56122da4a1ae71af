// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/ZPKDesktopPlugIn.h"

#include "UserInterface/Desktop/ZPKDesktopFrontEnd.h"
#include "UserInterface/Desktop/ZPKDisplayProbe.h"

extern "C" __attribute__((visibility("default"))) ZPKFrontEnd* ZPKCreateDesktopFrontEnd(
    const ZPKDesktopParameters& parameters);

ZPKFrontEnd* ZPKCreateDesktopFrontEnd(const ZPKDesktopParameters& parameters) {
    const ZPKDisplayProbe probe;
    if (!probe.displayAnswers()) {
        return nullptr;
    }
    return new ZPKDesktopFrontEnd(parameters);
}
