// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/BoundedErrorLog.h"

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKTerminalText.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kLimit = 4000;
constexpr std::size_t kLastLineReserve = 64;

/// No single name may take the room of all the other lines.
constexpr std::size_t kPieceLimit = 160;

std::string printable(const std::string& text) {
    return ZPKTerminalText::printable(text, kPieceLimit);
}

}  // namespace

BoundedErrorLog::~BoundedErrorLog() {
    if (m_leftOut > 0) {
        write("ditto: and " + std::to_string(m_leftOut) + " more errors\n");
    }
}

void BoundedErrorLog::write(const std::string& text) {
    // An error output that is closed or full is nobody's to hear of.
    static_cast<void>(ZPKDescriptorIO::writeWhole(m_descriptor, text));
}

void BoundedErrorLog::error(const std::string& name, const std::string& reason) {
    writeLine("ditto: " + printable(name) + ": " + printable(reason) + "\n");
}

void BoundedErrorLog::warning(const std::string& name, const std::string& reason) {
    writeLine("ditto: " + printable(name) + ": warning: " + printable(reason) + "\n");
}

void BoundedErrorLog::writeLine(const std::string& line) {
    // Once a line has been left out all later ones are, so that the count tells how many come after.
    if (m_leftOut > 0 || m_written + line.size() > kLimit - kLastLineReserve) {
        ++m_leftOut;
        return;
    }
    m_written += line.size();
    write(line);
}

}  // namespace zpk_archive
