// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKTerminalText.h"

namespace {

/// A line longer than this is nobody's answer; what is beyond is taken as the next line.
constexpr std::size_t kLongestLine = 4096;

/// What is left of a text when only what a terminal draws is kept; tabs keep words apart.
std::string drawn(std::string text) {
    std::replace(text.begin(), text.end(), '\t', ' ');
    return ZPKTerminalText::harmless(text);
}

/// Failures do not count: whoever read the output may be gone.
void put(int descriptor, std::string_view text) {
    static_cast<void>(ZPKDescriptorIO::writeWhole(descriptor, text));
}

/// Diagnostics go through the standard streams' buffers; what was printed first must appear first.
void flushStandardStreams() {
    std::fflush(stdout);
    std::fflush(stderr);
}

}  // namespace

std::string ZPKTerminal::line(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return drawn(std::move(text));
}

ZPKTerminal::ZPKTerminal(int input, int output, int error)
    : m_input(input),
      m_output(output),
      m_error(error),
      m_interactive(::isatty(input) != 0 && ::isatty(output) != 0),
      m_rewrites(::isatty(output) != 0) {}

void ZPKTerminal::print(const std::string& text) {
    endStatus();
    flushStandardStreams();
    put(m_output, drawn(text));
}

void ZPKTerminal::printError(const std::string& text) {
    endStatus();
    flushStandardStreams();
    put(m_error, drawn(text));
}

void ZPKTerminal::printStatus(const std::string& text) {
    const std::string line = ZPKTerminal::line(text);
    if (!canRewrite(line)) {
        print(line + "\n");
        return;
    }
    flushStandardStreams();
    const std::size_t left = m_statusLength > line.size() ? m_statusLength - line.size() : 0;
    put(m_output, "\r" + line + std::string(left, ' ') + std::string(left, '\b'));
    m_statusLength = line.size();
}

void ZPKTerminal::endStatus() {
    if (m_statusLength > 0) {
        m_statusLength = 0;
        put(m_output, "\n");
    }
}

bool ZPKTerminal::readInput() {
    char block[512];
    const ssize_t count = ZPKDescriptorIO::readSome(m_input, block, sizeof(block));
    if (count <= 0) {
        return false;
    }
    m_received.append(block, static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> ZPKTerminal::takeLine() {
    const std::size_t end = m_received.find('\n');
    if (end == std::string::npos && m_received.size() < kLongestLine) {
        return std::nullopt;
    }
    const std::string line = m_received.substr(0, end);
    m_received.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

bool ZPKTerminal::canRewrite(const std::string& line) const {
    if (!m_rewrites) {
        return false;
    }
    // No character takes more columns than bytes; a size of 0 means that the terminal tells none.
    winsize size{};
    const bool known = ::ioctl(m_output, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return !known || line.size() < size.ws_col;
}
