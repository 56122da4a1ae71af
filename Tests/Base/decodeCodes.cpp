// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Says of each line of standard input, which is a code in hexadecimal digits, what it is in the encoding that
// the argument names: the same in UTF-8, or a hyphen where it is none.

#include <cstdio>
#include <iostream>
#include <string>

#include "Base/ZPKTextDecoder.h"

namespace {

std::string bytesOf(const std::string& digits) {
    std::string bytes;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
    }
    return bytes;
}

void print(const std::string& text) {
    for (const char each : text) {
        std::printf("%02x", static_cast<unsigned int>(static_cast<unsigned char>(each)));
    }
    std::puts(text.empty() ? "-" : "");
}

}  // namespace

int main(int argc, char** argv) {
    auto decoder = ZPKTextDecoder::forEncoding(argc == 2 ? argv[1] : "");
    if (decoder == nullptr) {
        return 1;
    }
    for (std::string line; std::getline(std::cin, line);) {
        std::string text;
        const bool isRead = decoder->decode(bytesOf(line), text);
        const bool isWhole = decoder->isBetweenCharacters();
        if (!isWhole) {
            // The next line begins anew.
            decoder = ZPKTextDecoder::forEncoding(argv[1]);
        }
        print(isRead && isWhole ? text : "");
    }
    return 0;
}
