// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace {

/// A line longer than this is nobody's answer; what is beyond is taken as the next line.
constexpr std::size_t kLongestLine = 4096;

struct Character {
    std::size_t length;
    std::uint32_t codePoint;
};

/// The character at the start of `text`, or a length of 0 when these bytes are no UTF-8.
Character firstCharacter(std::string_view text) {
    const auto byte = [&text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return {1, lead};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
        return {0, 0};
    }
    std::uint32_t codePoint = lead & (0xFFU >> (length + 1));
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0) != 0x80) {
            return {0, 0};
        }
        codePoint = (codePoint << 6) | (byte(at) & 0x3FU);
    }
    constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    const bool isValid = codePoint >= kSmallest[length] && codePoint <= 0x10FFFF && !isSurrogate;
    return {isValid ? length : 0, codePoint};
}

bool isControl(std::uint32_t codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
}

std::string printable(std::string_view text, bool keepLineEnds) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        if (character.codePoint == '\n' || character.codePoint == '\t') {
            result += keepLineEnds ? text[0] : ' ';
        } else if (character.length == 0 || isControl(character.codePoint)) {
            result += '?';
        } else {
            result += text.substr(0, character.length);
        }
        text.remove_prefix(character.length == 0 ? 1 : character.length);
    }
    return result;
}

void writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

/// Diagnostics go through the standard streams' buffers; what was printed first must appear first.
void flushStandardStreams() {
    std::fflush(stdout);
    std::fflush(stderr);
}

}  // namespace

std::string ZPKTerminalLine(const std::string& text) {
    return printable(text, false);
}

std::string ZPKTerminalText(const std::string& text) {
    return printable(text, true);
}

ZPKTerminal::ZPKTerminal(int input, int output, int error)
    : m_input(input),
      m_output(output),
      m_error(error),
      m_interactive(isatty(input) != 0 && isatty(output) != 0),
      m_rewrites(isatty(output) != 0) {}

void ZPKTerminal::print(const std::string& text) {
    endStatus();
    flushStandardStreams();
    writeAll(m_output, text);
}

void ZPKTerminal::printError(const std::string& text) {
    endStatus();
    flushStandardStreams();
    writeAll(m_error, text);
}

void ZPKTerminal::printStatus(const std::string& line) {
    if (!canRewrite(line)) {
        print(line + "\n");
        return;
    }
    flushStandardStreams();
    const std::size_t left = m_statusLength > line.size() ? m_statusLength - line.size() : 0;
    writeAll(m_output, "\r" + line + std::string(left, ' ') + std::string(left, '\b'));
    m_statusLength = line.size();
}

void ZPKTerminal::endStatus() {
    if (m_statusLength > 0) {
        m_statusLength = 0;
        writeAll(m_output, "\n");
    }
}

bool ZPKTerminal::readInput() {
    char block[512];
    ssize_t count = 0;
    do {
        count = read(m_input, block, sizeof(block));
    } while (count < 0 && errno == EINTR);
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
    const bool known = ioctl(m_output, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return !known || line.size() < size.ws_col;
}
