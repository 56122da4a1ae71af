// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <system_error>
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

void InputFile::readAhead() {
    if (m_ahead) {
        return;
    }
    try {
        m_ahead = std::make_unique<ReadAhead>(sourceOfRest());
    } catch (const std::system_error&) {
        // It is read in this thread.
        return;
    }
}

ByteSource InputFile::sourceOfRest() {
    if (m_source) {
        return m_source;
    }
    return [file = m_file.get()](std::uint8_t* bytes, std::size_t count) {
        return countOrThrow(ZPKDescriptorIO::readSome(file, bytes, count));
    };
}

std::size_t InputFile::readSome(std::uint8_t* bytes, std::size_t count) {
    if (!m_ahead) {
        return m_source ? m_source(bytes, count)
                        : countOrThrow(ZPKDescriptorIO::readSome(m_file.get(), bytes, count));
    }
    if (m_ready.empty()) {
        m_ready = m_ahead->next();
    }
    const std::size_t done = std::min(count, m_ready.size());
    std::copy_n(m_ready.begin(), done, bytes);
    m_ready = m_ready.subspan(done);
    return done;
}

std::span<const std::uint8_t> InputFile::peek(std::size_t count) {
    assert(count <= m_buffer.size());
    if (m_rest.empty() && m_ahead) {
        // Where it lies.
        m_rest = m_ready.empty() ? m_ahead->next() : m_ready;
        m_ready = {};
    }
    if (m_rest.size() < count) {
        gather(count);
    }
    return m_rest;
}

void InputFile::gather(std::size_t count) {
    std::size_t end = m_rest.size();
    if (end > 0) {
        std::memmove(m_buffer.data(), m_rest.data(), end);
    }
    while (end < count) {
        const std::size_t got = readSome(m_buffer.data() + end, m_buffer.size() - end);
        if (got == 0) {
            break;
        }
        end += got;
    }
    m_rest = std::span(m_buffer).first(end);
}

void InputFile::consume(std::size_t count) {
    assert(count <= m_rest.size());
    m_rest = m_rest.subspan(count);
}

std::size_t InputFile::read(std::uint8_t* bytes, std::size_t count) {
    std::size_t done = std::min(count, m_rest.size());
    std::copy_n(m_rest.begin(), done, bytes);
    m_rest = m_rest.subspan(done);
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
