// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKEnvironment.h"
#include "Base/ZPKTerminalText.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr std::size_t kKeptResults = std::size_t{64} * 1024;
constexpr std::size_t kUsualColumns = 80;

/// There is nobody left to tell when it cannot be written.
void writeMessage(const std::string& text) {
    static_cast<void>(ZPKDescriptorIO::writeWhole(STDERR_FILENO, text));
}

bool canRewrite(int descriptor) {
    return ::isatty(descriptor) == 1 && ZPKEnvironment::value("TERM").value_or("dumb") != "dumb";
}

}  // namespace

void Console::result(std::string_view text) {
    m_results += text;
    if (m_results.size() >= kKeptResults) {
        finish();
    }
}

void Console::resultLine(std::string_view text) {
    result(ZPKTerminalText::printable(text) + "\n");
}

void Console::error(std::string_view text) {
    const bool isColoured = Console::isColoured(Stream::Messages);
    const std::string word = isColoured ? "\x1b[1;31merror:\x1b[0m " : "error: ";
    message(word + ZPKTerminalText::printable(text));
}

void Console::note(std::string_view text) {
    if (m_detail != Detail::Quiet) {
        message(ZPKTerminalText::printable(text));
    }
}

void Console::more(std::string_view text) {
    if (m_detail == Detail::Verbose) {
        message(ZPKTerminalText::printable(text));
    }
}

void Console::finish() {
    const bool isWritten = ZPKDescriptorIO::writeWhole(STDOUT_FILENO, m_results);
    m_results.clear();
    if (!isWritten) {
        throw PackagerFailure::ofSystem("standard output", errno);
    }
}

bool Console::areResultsOnATerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

bool Console::isColoured(Stream stream) {
    const int descriptor = stream == Stream::Results ? STDOUT_FILENO : STDERR_FILENO;
    return canRewrite(descriptor) && !ZPKEnvironment::isSet("NO_COLOR");
}

Console::Kind Console::progressKind() const {
    if (m_detail == Detail::Quiet) {
        return Kind::None;
    }
    return canRewrite(STDERR_FILENO) ? Kind::InPlace : Kind::Lines;
}

std::size_t Console::columns() const {
    struct winsize size {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

void Console::showInPlace(std::string_view text) {
    const ZPKMutexLock lock(m_mutex);
    m_inPlace = text;
    writeMessage(kWipe + m_inPlace);
}

void Console::message(std::string_view text) {
    const ZPKMutexLock lock(m_mutex);
    const std::string line = "zpkpack: " + std::string(text) + "\n";
    writeMessage(m_inPlace.empty() ? line : kWipe + line + m_inPlace);
}

}  // namespace zpk_packager
