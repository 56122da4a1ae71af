// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/ZPKFileDescriptor.h"

/// A few words with a Wayland compositor beside the toolkit, in the protocol's own form. Objects are numbers
/// that the sender chooses, each once; the display is object 1.
class ZPKCompositorTalk {
public:
    static constexpr std::uint32_t kDisplay = 1;

    struct Message {
        std::uint32_t object = 0;
        std::uint32_t operation = 0;
        std::vector<std::uint32_t> words;

        /// The text that begins at that word; empty where none does.
        std::string text(std::size_t at) const;
    };

    /// Connects to the compositor that the environment names; `milliseconds` bound each wait for it.
    explicit ZPKCompositorTalk(int milliseconds);

    bool isOpen() const { return m_connection.isOpen(); }

    bool send(std::uint32_t object, std::uint32_t operation, const std::vector<std::uint32_t>& words);

    /// The next that the compositor says; nothing when it ends the connection or is silent for too long.
    std::optional<Message> read();

    /// Appends a text in the form that it has in a message.
    static void append(std::vector<std::uint32_t>& words, std::string_view text);

private:
    bool readWords(std::uint32_t* words, std::size_t count);

    const int m_milliseconds;
    ZPKFileDescriptor m_connection;
};
