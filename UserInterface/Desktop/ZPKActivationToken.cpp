// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKActivationToken.h"

#include <cstdint>
#include <optional>
#include <string_view>

#include "Base/ZPKEnvironment.h"
#include "UserInterface/Desktop/ZPKCompositorTalk.h"

namespace {

/// Who is silent for so long hangs, and nobody sees a pointer then.
constexpr int kAnswerMilliseconds = 1000;

constexpr std::string_view kInterface = "xdg_activation_v1";
constexpr std::uint32_t kVersion = 1;

/// What this program calls the objects.
enum Object : std::uint32_t { Registry = 2, AllTold = 3, Activation = 4, Token = 5 };

// What each of them is asked, and what is heard of it.
constexpr std::uint32_t kDisplaySync = 0;
constexpr std::uint32_t kDisplayGetRegistry = 1;
constexpr std::uint32_t kRegistryBind = 0;
constexpr std::uint32_t kRegistryGlobal = 0;
constexpr std::uint32_t kActivationGetToken = 1;
constexpr std::uint32_t kTokenCommit = 3;
constexpr std::uint32_t kTokenDone = 0;

/// The number by which the compositor offers the interface.
std::optional<std::uint32_t> findInterface(ZPKCompositorTalk& talk) {
    std::optional<std::uint32_t> number;
    if (!talk.send(ZPKCompositorTalk::kDisplay, kDisplayGetRegistry, {Registry}) ||
        !talk.send(ZPKCompositorTalk::kDisplay, kDisplaySync, {AllTold})) {
        return std::nullopt;
    }
    while (const std::optional<ZPKCompositorTalk::Message> message = talk.read()) {
        if (message->object == AllTold) {
            return number;
        }
        if (message->object == Registry && message->operation == kRegistryGlobal &&
            message->text(1) == kInterface) {
            number = message->words.front();
        }
    }
    return std::nullopt;
}

std::string requestToken(ZPKCompositorTalk& talk, std::uint32_t number) {
    std::vector<std::uint32_t> bound = {number};
    ZPKCompositorTalk::append(bound, kInterface);
    bound.insert(bound.end(), {kVersion, Activation});
    if (!talk.send(Registry, kRegistryBind, bound) || !talk.send(Activation, kActivationGetToken, {Token}) ||
        !talk.send(Token, kTokenCommit, {})) {
        return {};
    }
    while (const std::optional<ZPKCompositorTalk::Message> message = talk.read()) {
        if (message->object == Token && message->operation == kTokenDone) {
            return message->text(0);
        }
    }
    return {};
}

}  // namespace

std::unique_ptr<ZPKExpectedProgram> ZPKActivationToken::request() {
    ZPKCompositorTalk talk(kAnswerMilliseconds);
    const std::optional<std::uint32_t> number = talk.isOpen() ? findInterface(talk) : std::nullopt;
    std::string token = number ? requestToken(talk, *number) : std::string();
    if (token.empty()) {
        return nullptr;
    }
    return std::unique_ptr<ZPKExpectedProgram>(new ZPKActivationToken(std::move(token)));
}

std::vector<std::string> ZPKActivationToken::environment() const {
    std::vector<std::string> entries = {"XDG_ACTIVATION_TOKEN=" + m_token};
    if (ZPKEnvironment::isSet("DISPLAY")) {
        entries.push_back("DESKTOP_STARTUP_ID=" + m_token);
    }
    return entries;
}
