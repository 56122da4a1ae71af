// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/BoundedErrorLog.h"

#include <unistd.h>

#include <cerrno>

#include "Archive/MemberName.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kLimit = 4000;
constexpr std::size_t kLastLineReserve = 64;

void writeAll(int descriptor, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        ssize_t wrote = write(descriptor, text.data() + done, text.size() - done);
        if (wrote < 0 && errno != EINTR) {
            return;
        }
        done += wrote > 0 ? static_cast<std::size_t>(wrote) : 0;
    }
}

}  // namespace

BoundedErrorLog::~BoundedErrorLog() {
    if (m_leftOut > 0) {
        writeAll(m_descriptor, "ditto: and " + std::to_string(m_leftOut) + " more errors\n");
    }
}

void BoundedErrorLog::error(const std::string& name, const std::string& reason) {
    writeLine("ditto: " + printableName(name) + ": " + printableName(reason) + "\n");
}

void BoundedErrorLog::warning(const std::string& name, const std::string& reason) {
    writeLine("ditto: " + printableName(name) + ": warning: " + printableName(reason) + "\n");
}

void BoundedErrorLog::writeLine(const std::string& line) {
    // Once a line has been left out all later ones are, so that the count tells how many come after.
    if (m_leftOut > 0 || m_written + line.size() > kLimit - kLastLineReserve) {
        ++m_leftOut;
        return;
    }
    m_written += line.size();
    writeAll(m_descriptor, line);
}

}  // namespace zpk_archive
