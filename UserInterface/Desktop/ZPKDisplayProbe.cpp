// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKDisplayProbe.h"

#include <cstdint>
#include <optional>
#include <string>

#include "Base/ZPKEnvironment.h"
#include "UserInterface/Desktop/ZPKCompositorTalk.h"

namespace {

constexpr int kAnswerMilliseconds = 10'000;

/// A compositor that takes the connection only to drop it ends the process inside the toolkit, so it is
/// asked something that each one answers: its registry, and a sign when that is through.
bool compositorAnswers() {
    constexpr std::uint32_t kSync = 0;
    constexpr std::uint32_t kGetRegistry = 1;
    ZPKCompositorTalk talk(kAnswerMilliseconds);
    return talk.isOpen() && talk.send(ZPKCompositorTalk::kDisplay, kGetRegistry, {2}) &&
           talk.send(ZPKCompositorTalk::kDisplay, kSync, {3}) && talk.read().has_value();
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
    return compositorAnswers() || answersX11();
}

bool ZPKDisplayProbe::answersX11() {
    if (!ZPKEnvironment::isSet("DISPLAY")) {
        return false;
    }
    m_connection.reset(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(m_connection.get()) == 0;
}
