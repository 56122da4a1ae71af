// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKDimStream.h"

#include <sys/types.h>

#include <string>
#include <string_view>

#include "Base/ZPKDescriptorIO.h"

namespace {

constexpr std::string_view kDim = "\x1b[2m";
constexpr std::string_view kNotDim = "\x1b[22m";

ssize_t writeDim(void* descriptor, const char* bytes, std::size_t size) {
    std::string_view text(bytes, size);
    const bool endsLine = text.ends_with('\n');
    text.remove_suffix(endsLine ? 1 : 0);
    std::string drawn;
    if (!text.empty()) {
        drawn.append(kDim).append(text).append(kNotDim);
    }
    // Failures do not count: nobody is left to read the words.
    static_cast<void>(ZPKDescriptorIO::writeWhole(*static_cast<const int*>(descriptor),
                                                  drawn.append(endsLine ? "\n" : "")));
    return static_cast<ssize_t>(size);
}

}  // namespace

ZPKDimStream::ZPKDimStream(FILE*& stream, int descriptor)
    : m_stream(stream), m_before(stream), m_descriptor(descriptor) {
    cookie_io_functions_t functions{};
    functions.write = &writeDim;
    m_dimmed = ::fopencookie(const_cast<int*>(&m_descriptor), "w", functions);
    if (m_dimmed != nullptr) {
        std::fflush(m_before);
        std::setvbuf(m_dimmed, nullptr, _IOLBF, BUFSIZ);
        m_stream = m_dimmed;
    }
}

ZPKDimStream::~ZPKDimStream() {
    if (m_dimmed != nullptr) {
        m_stream = m_before;
        std::fclose(m_dimmed);
    }
}
