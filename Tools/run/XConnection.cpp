// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/run/XConnection.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <vector>

#include "Base/ZPKDescriptorIO.h"
#include "RunFile/ZPKByteOrder.h"

namespace zpk_run {

namespace {

constexpr std::string_view kKeyKind = "MIT-MAGIC-COOKIE-1";
constexpr std::size_t kLargestFile = std::size_t{1} << 20;
constexpr std::size_t kLargestAnswer = std::size_t{1} << 20;
constexpr std::size_t kEventSize = 32;
constexpr std::uint8_t kInternAtom = 16;
constexpr char kAccepted = 1;
/// A server that says nothing for so long while one logs in counts as none.
constexpr timeval kPatience{5, 0};

/// The number of the display on this machine that $DISPLAY names; empty for others.
std::string displayNumber() {
    const char* const value = std::getenv("DISPLAY");
    std::string_view display = value == nullptr ? "" : value;
    display.remove_prefix(display.starts_with("unix:") ? 4 : 0);
    if (!display.starts_with(':')) {
        return {};
    }
    const std::string_view number = display.substr(1, display.find('.') - 1);
    return number.find_first_not_of("0123456789") == std::string_view::npos ? std::string(number)
                                                                            : std::string();
}

/// The first name is one of a file, the second one that only the kernel knows.
ZPKFileDescriptor socketOf(const std::string& number) {
    const std::string path = "/tmp/.X11-unix/X" + number;
    for (const std::string& name : {path, std::string(1, '\0') + path}) {
        ZPKFileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        if (name.size() >= sizeof(address.sun_path)) {
            break;
        }
        name.copy(address.sun_path, name.size());
        const std::size_t length = offsetof(sockaddr_un, sun_path) + name.size();
        if (socket.isOpen() && ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address),
                                         static_cast<socklen_t>(length)) == 0) {
            return socket;
        }
    }
    return {};
}

/// Takes a length of two bytes, the higher first, and so many bytes.
std::string_view takeField(std::string_view& bytes) {
    if (bytes.size() < 2) {
        bytes = {};
        return {};
    }
    const std::size_t length = static_cast<std::size_t>(static_cast<unsigned char>(bytes[0])) << 8 |
                               static_cast<unsigned char>(bytes[1]);
    const std::string_view field = bytes.substr(2, length);
    bytes.remove_prefix(2 + field.size());
    return field;
}

/// The keys that the person has for this display, and none at all as the last.
std::vector<std::string> keysFor(const std::string& number) {
    const char* const named = std::getenv("XAUTHORITY");
    const char* const home = std::getenv("HOME");
    const std::string path =
        named != nullptr ? named : std::string(home != nullptr ? home : "") + "/.Xauthority";
    const ZPKFileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::vector<std::string> keys;
    const std::string contents =
        file.isOpen() ? ZPKDescriptorIO::readToEnd(file.get(), kLargestFile).value_or("") : "";
    for (std::string_view rest = contents; rest.size() > 2;) {
        rest.remove_prefix(2);
        takeField(rest);
        const std::string_view display = takeField(rest);
        const std::string_view kind = takeField(rest);
        const std::string_view key = takeField(rest);
        if (kind == kKeyKind && (display.empty() || display == number)) {
            keys.emplace_back(key);
        }
    }
    keys.emplace_back();
    return keys;
}

bool readWhole(const ZPKFileDescriptor& socket, std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = ZPKDescriptorIO::retry(
            [&] { return ::read(socket.get(), bytes.data() + done, bytes.size() - done); });
        if (count <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

std::string padded(std::string_view text) {
    std::string bytes(text);
    bytes.resize((bytes.size() + 3) / 4 * 4, '\0');
    return bytes;
}

}  // namespace

std::optional<XConnection> XConnection::toDisplay() {
    const std::string number = displayNumber();
    if (number.empty()) {
        return std::nullopt;
    }
    for (const std::string& key : keysFor(number)) {
        XConnection connection(socketOf(number));
        if (connection.m_socket.isOpen() && connection.logIn(key)) {
            return connection;
        }
    }
    return std::nullopt;
}

bool XConnection::logIn(const std::string& key) {
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof(kPatience));
    const std::string_view kind = key.empty() ? std::string_view() : kKeyKind;
    ZPKByteWriter out;
    // Numbers with the lowest byte first, version 11.0 of the protocol.
    out.number(std::uint16_t{'l'});
    out.number(std::uint16_t{11});
    out.number(std::uint16_t{0});
    out.number(static_cast<std::uint16_t>(kind.size()));
    out.number(static_cast<std::uint16_t>(key.size()));
    out.number(std::uint16_t{0});
    send(out.bytes() + padded(kind) + padded(key));
    std::string head(8, '\0');
    if (!readWhole(m_socket, head) || head[0] != kAccepted) {
        return false;
    }
    const std::size_t words = ZPKByteReader(std::string_view(head).substr(6)).number<std::uint16_t>();
    std::string answer(std::min(words * 4, kLargestAnswer), '\0');
    const bool isRead = readWhole(m_socket, answer) && readScreen(answer);
    constexpr timeval kForever{0, 0};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &kForever, sizeof(kForever));
    return isRead;
}

bool XConnection::readScreen(const std::string& answer) {
    constexpr std::size_t kFixedPart = 32;
    constexpr std::size_t kFormatSize = 8;
    ZPKByteReader in(answer);
    in.number<std::uint32_t>();
    m_nextName = in.number<std::uint32_t>();
    in.number<std::uint64_t>();
    const std::size_t vendor = in.number<std::uint16_t>();
    in.number<std::uint16_t>();
    in.number<std::uint8_t>();
    const std::size_t formats = in.number<std::uint8_t>();
    const std::size_t start = kFixedPart + (vendor + 3) / 4 * 4 + formats * kFormatSize;
    ZPKByteReader screen(std::string_view(answer).substr(std::min(start, answer.size())));
    m_root = screen.number<std::uint32_t>();
    screen.number<std::uint32_t>();
    m_white = screen.number<std::uint32_t>();
    m_black = screen.number<std::uint32_t>();
    screen.number<std::uint32_t>();
    m_width = screen.number<std::uint16_t>();
    m_height = screen.number<std::uint16_t>();
    return in.isGood() && screen.isGood();
}

std::uint32_t XConnection::atom(const std::string& name) {
    ZPKByteWriter out;
    out.number(kInternAtom);
    out.number(std::uint8_t{0});
    out.number(static_cast<std::uint16_t>(2 + (name.size() + 3) / 4));
    out.number(static_cast<std::uint16_t>(name.size()));
    out.number(std::uint16_t{0});
    send(out.bytes() + padded(name));
    const std::optional<std::string> answer = nextEvent();
    return answer ? ZPKByteReader(std::string_view(*answer).substr(8)).number<std::uint32_t>() : 0;
}

void XConnection::send(const std::string& request) {
    // Who has gone away is noticed by the next reading.
    ::send(m_socket.get(), request.data(), request.size(), MSG_NOSIGNAL);
}

std::optional<std::string> XConnection::nextEvent() {
    std::string event(kEventSize, '\0');
    return readWhole(m_socket, event) ? std::optional(event) : std::nullopt;
}

}  // namespace zpk_run
