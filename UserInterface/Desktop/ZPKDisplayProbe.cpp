// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDisplayProbe.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

bool waylandAnswers() {
    const std::string display = variable("WAYLAND_DISPLAY");
    const std::string path = display.front() == '/' ? display : variable("XDG_RUNTIME_DIR") + "/" + display;
    sockaddr_un address{};
    if (path.size() >= sizeof(address.sun_path)) {
        return false;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return false;
    }
    const auto* generic = static_cast<const sockaddr*>(static_cast<const void*>(&address));
    const bool answers = connect(descriptor, generic, sizeof(address)) == 0;
    close(descriptor);
    return answers;
}

}  // namespace

ZPKDisplayProbe::ZPKDisplayProbe() : m_answers(probe()) {}

bool ZPKDisplayProbe::probe() {
    const std::string platform = variable("QT_QPA_PLATFORM");
    if (!platform.empty() && platform != "xcb") {
        return true;
    }
    // An inherited connection takes the place of the socket and can be used only once.
    if (platform.empty() && !variable("WAYLAND_SOCKET").empty()) {
        return true;
    }
    if (platform.empty() && !variable("WAYLAND_DISPLAY").empty() && waylandAnswers()) {
        return true;
    }
    return !variable("DISPLAY").empty() && probeX11();
}

bool ZPKDisplayProbe::probeX11() {
    m_connection.reset(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(m_connection.get()) == 0;
}
