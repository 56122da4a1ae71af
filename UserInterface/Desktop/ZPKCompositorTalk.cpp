// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKCompositorTalk.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKEnvironment.h"
#include "Base/ZPKPath.h"

namespace {

constexpr std::size_t kHeaderWords = 2;
constexpr std::uint32_t kSizeShift = 16;
constexpr std::uint32_t kOperationMask = 0xFFFF;

/// The longest message that the protocol's library takes.
constexpr std::uint32_t kLongestMessage = 4096;

std::string socketPath() {
    const std::optional<std::string> display = ZPKEnvironment::value("WAYLAND_DISPLAY");
    if (!display || display->front() == '/') {
        return display.value_or("");
    }
    return ZPKPath::join(ZPKEnvironment::value("XDG_RUNTIME_DIR").value_or("/"), *display);
}

ZPKFileDescriptor connectTo(const std::string& path) {
    sockaddr_un address{};
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        return {};
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    ZPKFileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto* generic = static_cast<const sockaddr*>(static_cast<const void*>(&address));
    if (!connection.isOpen() || ::connect(connection.get(), generic, sizeof(address)) != 0) {
        return {};
    }
    return connection;
}

}  // namespace

std::string ZPKCompositorTalk::Message::text(std::size_t at) const {
    // Its length with the end's null character, and then whole words.
    const std::size_t length = at < words.size() ? words[at] : 0;
    if (length == 0 || length > (words.size() - at - 1) * sizeof(words.front())) {
        return {};
    }
    return {static_cast<const char*>(static_cast<const void*>(&words[at + 1])), length - 1};
}

ZPKCompositorTalk::ZPKCompositorTalk(int milliseconds)
    : m_milliseconds(milliseconds), m_connection(connectTo(socketPath())) {}

bool ZPKCompositorTalk::send(std::uint32_t object, std::uint32_t operation,
                             const std::vector<std::uint32_t>& words) {
    const auto size = static_cast<std::uint32_t>((kHeaderWords + words.size()) * sizeof(words.front()));
    std::vector<std::uint32_t> message = {object, size << kSizeShift | operation};
    message.insert(message.end(), words.begin(), words.end());
    return ::send(m_connection.get(), message.data(), size, MSG_NOSIGNAL) == ssize_t{size};
}

std::optional<ZPKCompositorTalk::Message> ZPKCompositorTalk::read() {
    std::uint32_t header[kHeaderWords];
    if (!readWords(header, kHeaderWords)) {
        return std::nullopt;
    }
    const std::uint32_t size = header[1] >> kSizeShift;
    if (size < sizeof(header) || size > kLongestMessage || size % sizeof(header[0]) != 0) {
        return std::nullopt;
    }
    Message message{header[0], header[1] & kOperationMask, {}};
    message.words.resize(size / sizeof(header[0]) - kHeaderWords);
    if (!readWords(message.words.data(), message.words.size())) {
        return std::nullopt;
    }
    return message;
}

void ZPKCompositorTalk::append(std::vector<std::uint32_t>& words, std::string_view text) {
    const std::size_t at = words.size() + 1;
    words.push_back(static_cast<std::uint32_t>(text.size() + 1));
    words.resize(at + text.size() / sizeof(words.front()) + 1);
    std::memcpy(&words[at], text.data(), text.size());
}

bool ZPKCompositorTalk::readWords(std::uint32_t* words, std::size_t count) {
    std::size_t missing = count * sizeof(*words);
    auto* place = static_cast<char*>(static_cast<void*>(words));
    while (missing > 0) {
        pollfd waited{m_connection.get(), POLLIN, 0};
        if (ZPKDescriptorIO::retry([&] { return ::poll(&waited, 1, m_milliseconds); }) != 1) {
            return false;
        }
        const ssize_t got = ZPKDescriptorIO::readSome(m_connection.get(), place, missing);
        if (got <= 0) {
            return false;
        }
        place += got;
        missing -= static_cast<std::size_t>(got);
    }
    return true;
}
