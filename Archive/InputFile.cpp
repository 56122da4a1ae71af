// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <utility>

#include "Archive/DiskCalls.h"
#include "Archive/Failure.h"
#include "Base/ZPKDescriptorIO.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;

std::size_t countOrThrow(ssize_t got) {
    if (got < 0) {
        throw ArchiveFailure::ofSystem(errno);
    }
    return static_cast<std::size_t>(got);
}

}  // namespace

InputFile::InputFile(const std::string& path)
    // Opening a FIFO must not wait for a writer, and a terminal is not to become this process's own.
    : m_file(ZPKDescriptorIO::retry(
          [&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); })),
      m_buffer(kBufferSize) {
    struct stat status {};
    if (!m_file.isOpen() || !DiskCalls::status(m_file.get(), status)) {
        throw ArchiveFailure::ofSystem(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw ArchiveFailure("not a regular file");
    }
    ::posix_fadvise(m_file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
}

InputFile::InputFile(ByteSource source) : m_source(std::move(source)), m_buffer(kBufferSize) {}

std::size_t InputFile::readSome(std::uint8_t* bytes, std::size_t count) {
    return m_source ? m_source(bytes, count)
                    : countOrThrow(ZPKDescriptorIO::readSome(m_file.get(), bytes, count));
}

std::span<const std::uint8_t> InputFile::peek(std::size_t count) {
    assert(count <= m_buffer.size());
    if (m_end - m_begin < count) {
        std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
        while (m_end < count) {
            const std::size_t got = readSome(m_buffer.data() + m_end, m_buffer.size() - m_end);
            if (got == 0) {
                break;
            }
            m_end += got;
        }
    }
    return {m_buffer.data() + m_begin, m_end - m_begin};
}

void InputFile::consume(std::size_t count) {
    assert(count <= m_end - m_begin);
    m_begin += count;
}

std::size_t InputFile::read(std::uint8_t* bytes, std::size_t count) {
    std::size_t done = std::min(count, m_end - m_begin);
    std::memcpy(bytes, m_buffer.data() + m_begin, done);
    m_begin += done;
    while (done < count) {
        const std::size_t got = readSome(bytes + done, count - done);
        if (got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

}  // namespace zpk_archive
