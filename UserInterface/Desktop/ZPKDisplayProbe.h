// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <xcb/xcb.h>

#include <memory>

/// Finds out whether it is worth starting the toolkit: whether the display that the environment names
/// takes a connection. The connection stays for the probe's life: a server may start afresh when its
/// last client leaves, and refuse the toolkit meanwhile.
class ZPKDisplayProbe {
public:
    ZPKDisplayProbe();

    /// Where the environment names the toolkit's platform itself, and that is no display server, the
    /// probe cannot tell and says yes.
    bool displayAnswers() const { return m_answers; }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    bool probe();
    bool answersX11();

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    bool m_answers;
};
