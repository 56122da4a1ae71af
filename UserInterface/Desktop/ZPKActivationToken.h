// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "UserInterface/ZPKExpectedProgram.h"

/// A Wayland compositor's leave for another program's window to come to the front (xdg-activation). The
/// toolkit offers no way to ask for one that is meant for others, so the compositor is asked over a
/// connection of its own: without the keypress that one could point to, after a payload was unpacked for
/// minutes, and without the window, which is closed by then. What a token is worth then is the compositor's
/// affair.
class ZPKActivationToken : public ZPKExpectedProgram {
public:
    /// Null where the compositor does not speak of it, or not at once.
    static std::unique_ptr<ZPKExpectedProgram> request();

    /// Programs of X11 under such a compositor look for the token by the name that they know.
    std::vector<std::string> environment() const override;

private:
    explicit ZPKActivationToken(std::string token) : m_token(std::move(token)) {}

    const std::string m_token;
};
