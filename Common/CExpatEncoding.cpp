// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/CExpatEncoding.h"

#include <errno.h>
#include <iconv.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace varno_zpk {

namespace {

constexpr int kNoCharacter = -1;

/// Stores the character that `byte` stands for. False when the byte is no whole character.
bool mapByte(iconv_t converter, char byte, int& outCharacter) {
    char* input = &byte;
    std::size_t inputLeft = 1;
    char buffer[sizeof(std::uint32_t)];
    char* output = buffer;
    std::size_t outputLeft = sizeof(buffer);
    ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (::iconv(converter, &input, &inputLeft, &output, &outputLeft) == static_cast<std::size_t>(-1)) {
        outCharacter = kNoCharacter;
        return errno == EILSEQ;
    }
    if (outputLeft != 0) {
        return false;
    }
    std::uint32_t character;
    std::memcpy(&character, buffer, sizeof(character));
    // What Expat takes from a map.
    constexpr std::uint32_t kLastCharacter = 0xFFFF;
    outCharacter = character <= kLastCharacter ? static_cast<int>(character) : kNoCharacter;
    return true;
}

bool fillMap(iconv_t converter, int (&map)[256]) {
    for (int byte = 0; byte < 256; ++byte) {
        if (!mapByte(converter, static_cast<char>(byte), map[byte])) {
            return false;
        }
    }
    return true;
}

}  // namespace

int CExpatEncoding::HandleUnknownEncoding(void*, const char* name, XML_Encoding* outEncoding) {
    const iconv_t converter = ::iconv_open("WCHAR_T", name);
    // The host's way to say that it has no such converter.
    if (converter == reinterpret_cast<iconv_t>(-1)) {  // NOLINT(performance-no-int-to-ptr)
        return XML_STATUS_ERROR;
    }
    const bool isFilled = fillMap(converter, outEncoding->map);
    ::iconv_close(converter);
    outEncoding->data = nullptr;
    outEncoding->convert = nullptr;
    outEncoding->release = nullptr;
    return isFilled ? XML_STATUS_OK : XML_STATUS_ERROR;
}

}  // namespace varno_zpk
