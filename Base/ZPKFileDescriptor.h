// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

/// Owns an open descriptor, or none (-1), and closes it.
class ZPKFileDescriptor {
public:
    ZPKFileDescriptor() = default;
    explicit ZPKFileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ZPKFileDescriptor(ZPKFileDescriptor&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    ZPKFileDescriptor& operator=(ZPKFileDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~ZPKFileDescriptor() { static_cast<void>(close()); }

    bool isOpen() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

    /// Gives the descriptor away; the caller closes it.
    int release() { return std::exchange(m_descriptor, -1); }

    /// Closes now, if anything is open; false, with errno set, when the system reports that written
    /// data were lost. Interrupted by a signal it has closed all the same, and is not to be repeated.
    [[nodiscard]] bool close() {
        return !isOpen() || ::close(std::exchange(m_descriptor, -1)) == 0 || errno == EINTR;
    }

private:
    int m_descriptor = -1;
};
