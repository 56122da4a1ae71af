// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Platform/ZPKNamedLock.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <utility>

namespace {

/// A socket's name of the kind that is no file begins with a zero.
std::string socketName(const std::string& name) {
    return std::string(1, '\0') + "zephyrkit-" + std::to_string(::geteuid()) + "-" + name;
}

}  // namespace

bool ZPKNamedLock::take(const std::string& name) {
    m_socket = ZPKFileDescriptor();
    // Nobody can send anything through it: it is bound, and has a name, but never listens.
    ZPKFileDescriptor lock(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!lock.isOpen()) {
        return false;
    }
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string wanted = socketName(name);
    const std::size_t length = wanted.copy(address.sun_path, sizeof address.sun_path);
    const auto size = static_cast<socklen_t>(offsetof(struct sockaddr_un, sun_path) + length);
    if (::bind(lock.get(), reinterpret_cast<const struct sockaddr*>(&address), size) != 0) {
        return false;
    }
    m_socket = std::move(lock);
    return true;
}
