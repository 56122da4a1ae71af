// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Console.h"

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

bool Console::isColoured(Stream stream) {
    const int descriptor = stream == Stream::Results ? STDOUT_FILENO : STDERR_FILENO;
    return ::isatty(descriptor) == 1 && !ZPKEnvironment::isSet("NO_COLOR") &&
           ZPKEnvironment::value("TERM").value_or("dumb") != "dumb";
}

void Console::message(std::string_view text) {
    // There is nobody left to tell when it cannot be written.
    static_cast<void>(ZPKDescriptorIO::writeWhole(STDERR_FILENO, "zpkpack: " + std::string(text) + "\n"));
}

}  // namespace zpk_packager
