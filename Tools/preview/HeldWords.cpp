// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/preview/HeldWords.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <optional>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKTerminalText.h"

namespace {

constexpr const char* kComplaint = "Cannot load the form ";
constexpr std::size_t kLongest = std::size_t{16} << 20;

}  // namespace

HeldWords::HeldWords()
    : m_standardError(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)),
      m_words(::memfd_create("words", MFD_CLOEXEC)) {
    if (m_standardError.isOpen() && m_words.isOpen()) {
        ::dup2(m_words.get(), STDOUT_FILENO);
        ::dup2(m_words.get(), STDERR_FILENO);
    }
}

void HeldWords::tell(const std::string& reason) const {
    std::fflush(nullptr);
    const std::string found = complaint();
    const std::string line =
        "zephyrkit-preview: " + ZPKTerminalText::printable(found.empty() ? reason : found) + "\n";
    // There is nobody left to tell when it cannot be written.
    static_cast<void>(ZPKDescriptorIO::writeWhole(m_standardError.get(), line));
}

std::string HeldWords::complaint() const {
    if (::lseek(m_words.get(), 0, SEEK_SET) != 0) {
        return "";
    }
    const std::string words = ZPKDescriptorIO::readToEnd(m_words.get(), kLongest).value_or("");
    const std::size_t start = words.rfind(kComplaint);
    return start == std::string::npos ? "" : words.substr(start, words.find('\n', start) - start);
}
