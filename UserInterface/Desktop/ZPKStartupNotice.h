// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "UserInterface/ZPKExpectedProgram.h"

/// Tells an X11 desktop of a program that starts, in the messages of the startup notification protocol. They
/// go over a connection of their own, whose server may go while nobody looks.
class ZPKStartupNotice : public ZPKExpectedProgram {
public:
    /// Null where the window manager does not say that it knows the protocol. `name` is what people call the
    /// program.
    static std::unique_ptr<ZPKExpectedProgram> send(const std::string& program, const std::string& name);

    ~ZPKStartupNotice() override;

    std::vector<std::string> environment() const override { return {"DESKTOP_STARTUP_ID=" + m_identifier}; }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    ZPKStartupNotice();

    bool isUnderstood() const;
    void makeWindow();
    xcb_timestamp_t serverTime() const;
    xcb_atom_t atom(std::string_view name) const;
    void waitForServer() const;
    void sendMessage(const std::string& message) const;

    int m_screenNumber = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    /// Of the screen; none where there is no connection.
    xcb_window_t m_root = XCB_NONE;
    /// Names the sender of the messages, and is never seen.
    xcb_window_t m_window = XCB_NONE;
    std::string m_identifier;
};
