// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/run/ErrorWindow.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <vector>

#include "RunFile/ZPKByteOrder.h"
#include "Tools/run/XConnection.h"

namespace zpk_run {

namespace {

constexpr std::size_t kLineLength = 72;
constexpr int kLetterWidth = 6;
constexpr int kLineHeight = 16;
constexpr int kMargin = 16;
constexpr int kButtonWidth = 60;
constexpr int kButtonHeight = 24;
constexpr const char* kFont = "fixed";

// Requests, events, masks and names of the X protocol, version 11.
constexpr std::uint8_t kCreateWindow = 1;
constexpr std::uint8_t kMapWindow = 8;
constexpr std::uint8_t kChangeProperty = 18;
constexpr std::uint8_t kOpenFont = 45;
constexpr std::uint8_t kCreateContext = 55;
constexpr std::uint8_t kDrawRectangle = 67;
constexpr std::uint8_t kDrawText = 76;
constexpr std::uint8_t kKeyPress = 2;
constexpr std::uint8_t kButtonPress = 4;
constexpr std::uint8_t kExpose = 12;
constexpr std::uint8_t kClientMessage = 33;
constexpr std::uint32_t kWantedEvents = 0x1 | 0x4 | 0x8000;
constexpr std::uint32_t kAtom = 4;
constexpr std::uint32_t kString = 31;
constexpr std::uint32_t kTitle = 39;
/// Return, Enter, Escape, the space bar.
constexpr std::uint8_t kClosingKeys[] = {36, 104, 9, 65};

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = std::min(at + kLineLength, text.size());
        const std::size_t blank = text.rfind(' ', end);
        if (end < text.size() && blank != std::string::npos && blank > at) {
            end = blank;
        }
        lines.push_back(text.substr(at, end - at));
        at = end < text.size() && text[end] == ' ' ? end + 1 : end;
    }
    return lines;
}

std::string padded(std::string bytes) {
    bytes.resize((bytes.size() + 3) / 4 * 4, '\0');
    return bytes;
}

/// The window while it is there.
class Window {
public:
    Window(XConnection& server, const std::string& title, const std::string& text)
        : m_server(server),
          m_lines(linesOf(text)),
          m_closing(server.atom("WM_DELETE_WINDOW")),
          m_protocols(server.atom("WM_PROTOCOLS")) {
        m_width = static_cast<int>(kLineLength) * kLetterWidth + 2 * kMargin;
        m_height = static_cast<int>(m_lines.size()) * kLineHeight + kButtonHeight + 3 * kMargin;
        m_buttonX = (m_width - kButtonWidth) / 2;
        m_buttonY = m_height - kMargin - kButtonHeight;
        make();
        setProperty(kTitle, kString, 8, title, title.size());
        ZPKByteWriter closing;
        closing.number(m_closing);
        setProperty(m_protocols, kAtom, 32, closing.bytes(), 1);
        request(kMapWindow, 0, m_window);
    }

    void runUntilClosed() {
        while (const std::optional<std::string> event = m_server.nextEvent()) {
            const auto kind = static_cast<std::uint8_t>((*event)[0] & 0x7F);
            if (kind == kExpose) {
                draw();
            } else if (isClosing(kind, *event)) {
                return;
            }
        }
    }

private:
    /// A request that begins with a number, then what `more` holds.
    void request(std::uint8_t kind, std::uint8_t detail, std::uint32_t first, const std::string& more = {}) {
        ZPKByteWriter out;
        out.number(kind);
        out.number(detail);
        out.number(static_cast<std::uint16_t>(2 + (more.size() + 3) / 4));
        out.number(first);
        m_server.send(out.bytes() + padded(more));
    }

    void make() {
        ZPKByteWriter window;
        window.number(m_server.root());
        for (const int value : {(m_server.width() - m_width) / 2, (m_server.height() - m_height) / 2, m_width,
                                m_height, 0, 0}) {
            window.number(static_cast<std::uint16_t>(value));
        }
        window.number(std::uint32_t{0});
        window.number(std::uint32_t{0x2 | 0x800});
        window.number(m_server.white());
        window.number(kWantedEvents);
        request(kCreateWindow, 0, m_window, window.bytes());
        ZPKByteWriter font;
        font.number(static_cast<std::uint16_t>(std::string(kFont).size()));
        font.number(std::uint16_t{0});
        request(kOpenFont, 0, m_font, font.bytes() + kFont);
        ZPKByteWriter context;
        context.number(m_window);
        context.number(std::uint32_t{0x4 | 0x8 | 0x4000});
        context.number(m_server.black());
        context.number(m_server.white());
        context.number(m_font);
        request(kCreateContext, 0, m_context, context.bytes());
    }

    void setProperty(std::uint32_t name, std::uint32_t type, std::uint8_t bits, const std::string& value,
                     std::size_t count) {
        ZPKByteWriter out;
        out.number(name);
        out.number(type);
        out.number(std::uint32_t{bits});
        out.number(static_cast<std::uint32_t>(count));
        request(kChangeProperty, 0, m_window, out.bytes() + value);
    }

    void drawText(const std::string& text, int x, int y) {
        ZPKByteWriter out;
        out.number(m_context);
        out.number(static_cast<std::uint16_t>(x));
        out.number(static_cast<std::uint16_t>(y));
        request(kDrawText, static_cast<std::uint8_t>(text.size()), m_window, out.bytes() + text);
    }

    void draw() {
        int y = kMargin;
        for (const std::string& line : m_lines) {
            y += kLineHeight;
            drawText(line, kMargin, y);
        }
        ZPKByteWriter out;
        out.number(m_context);
        for (const int value : {m_buttonX, m_buttonY, kButtonWidth, kButtonHeight}) {
            out.number(static_cast<std::uint16_t>(value));
        }
        request(kDrawRectangle, 0, m_window, out.bytes());
        drawText("OK", m_buttonX + kButtonWidth / 2 - kLetterWidth, m_buttonY + kLineHeight);
    }

    bool isClosing(std::uint8_t kind, const std::string& event) const {
        ZPKByteReader in(std::string_view(event).substr(1));
        const auto detail = in.number<std::uint8_t>();
        if (kind == kKeyPress) {
            return std::find(std::begin(kClosingKeys), std::end(kClosingKeys), detail) !=
                   std::end(kClosingKeys);
        }
        if (kind == kClientMessage) {
            return ZPKByteReader(std::string_view(event).substr(12)).number<std::uint32_t>() == m_closing;
        }
        ZPKByteReader place(std::string_view(event).substr(24));
        const int x = place.number<std::int16_t>();
        const int y = place.number<std::int16_t>();
        return kind == kButtonPress && x >= m_buttonX && x < m_buttonX + kButtonWidth && y >= m_buttonY &&
               y < m_buttonY + kButtonHeight;
    }

    XConnection& m_server;
    const std::vector<std::string> m_lines;
    const std::uint32_t m_closing;
    const std::uint32_t m_protocols;
    const std::uint32_t m_window = m_server.newName();
    const std::uint32_t m_font = m_server.newName();
    const std::uint32_t m_context = m_server.newName();
    int m_width = 0;
    int m_height = 0;
    int m_buttonX = 0;
    int m_buttonY = 0;
};

}  // namespace

void ErrorWindow::show(const std::string& title, const std::string& text) {
    std::optional<XConnection> server = XConnection::toDisplay();
    if (server) {
        Window(*server, title, text).runUntilClosed();
    }
}

}  // namespace zpk_run
