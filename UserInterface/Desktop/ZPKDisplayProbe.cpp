// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDisplayProbe.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKEnvironment.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKPath.h"

namespace {

constexpr int kAnswerMilliseconds = 10'000;

/// A compositor that takes the connection only to drop it ends the process inside the toolkit, so it is
/// asked something that each one answers: its registry, and a sign when that is through.
bool compositorAnswers(int connection) {
    constexpr std::uint32_t kLength = 12U << 16;
    constexpr std::uint32_t kQuestion[] = {1, kLength | 1, 2, 1, kLength | 0, 3};
    if (::send(connection, kQuestion, sizeof(kQuestion), MSG_NOSIGNAL) != ssize_t{sizeof(kQuestion)}) {
        return false;
    }
    pollfd waited{connection, POLLIN, 0};
    char answer = 0;
    return ZPKDescriptorIO::retry([&] { return ::poll(&waited, 1, kAnswerMilliseconds); }) == 1 &&
           ZPKDescriptorIO::readSome(connection, &answer, sizeof(answer)) > 0;
}

bool waylandAnswers(const std::string& display) {
    const std::string folder = ZPKEnvironment::value("XDG_RUNTIME_DIR").value_or("/");
    const std::string path = display.front() == '/' ? display : ZPKPath::join(folder, display);
    sockaddr_un address{};
    if (path.size() >= sizeof(address.sun_path)) {
        return false;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const ZPKFileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto* generic = static_cast<const sockaddr*>(static_cast<const void*>(&address));
    return connection.isOpen() && ::connect(connection.get(), generic, sizeof(address)) == 0 &&
           compositorAnswers(connection.get());
}

}  // namespace

ZPKDisplayProbe::ZPKDisplayProbe() : m_answers(probe()) {}

bool ZPKDisplayProbe::probe() {
    if (const std::optional<std::string> platform = ZPKEnvironment::value("QT_QPA_PLATFORM")) {
        return *platform != "xcb" || answersX11();
    }
    // An inherited connection takes the place of the socket and can be used only once.
    if (ZPKEnvironment::isSet("WAYLAND_SOCKET")) {
        return true;
    }
    const std::optional<std::string> wayland = ZPKEnvironment::value("WAYLAND_DISPLAY");
    return (wayland && waylandAnswers(*wayland)) || answersX11();
}

bool ZPKDisplayProbe::answersX11() {
    if (!ZPKEnvironment::isSet("DISPLAY")) {
        return false;
    }
    m_connection.reset(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(m_connection.get()) == 0;
}
