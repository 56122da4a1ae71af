// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Base/ZPKFileDescriptor.h"

namespace zpk_run {

/// A connection to the X server of this machine. One thread uses one.
class XConnection {
public:
    /// To the server that $DISPLAY names, with the key that the person's authority file has for it; none
    /// where that is no server of this machine, or it does not answer or refuses.
    static std::optional<XConnection> toDisplay();

    std::uint32_t root() const { return m_root; }
    std::uint32_t white() const { return m_white; }
    std::uint32_t black() const { return m_black; }
    int width() const { return m_width; }
    int height() const { return m_height; }

    /// A name for a new window, font or context.
    std::uint32_t newName() { return m_nextName++; }

    /// The server's number for a name; 0 when it gives none. Called before there are events.
    std::uint32_t atom(const std::string& name);

    void send(const std::string& request);

    /// Waits for the next event, of 32 bytes; nothing when the server is gone.
    std::optional<std::string> nextEvent();

private:
    explicit XConnection(ZPKFileDescriptor socket) : m_socket(std::move(socket)) {}
    bool logIn(const std::string& key);
    bool readScreen(const std::string& answer);

    ZPKFileDescriptor m_socket;
    std::uint32_t m_root = 0;
    std::uint32_t m_white = 0;
    std::uint32_t m_black = 0;
    int m_width = 0;
    int m_height = 0;
    std::uint32_t m_nextName = 0;
};

}  // namespace zpk_run
