// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/MemberName.h"

#include <climits>
#include <cstdint>
#include <cstdio>

#include "Archive/Failure.h"

namespace zpk_archive {

namespace {

constexpr std::size_t kPrintableLimit = 160;

void appendComponent(std::string_view component, std::vector<std::string>& components) {
    if (component.empty() || component == ".") {
        return;
    }
    if (component == "..") {
        throw MemberFailure("the name climbs out of the folder");
    }
    if (component.size() > NAME_MAX) {
        throw MemberFailure("a part of the name is too long");
    }
    components.emplace_back(component);
}

/// Length of the UTF-8 character at the start, 0 when there is none that may be printed as it is.
std::size_t printableLength(std::string_view text) {
    auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char lead = byte(0);
    if (lead < 0x80) {
        return lead >= 0x20 && lead != 0x7f && lead != '\\' ? 1 : 0;
    }
    std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < length) {
        return 0;
    }
    std::uint32_t code = lead & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80) {
            return 0;
        }
        code = code << 6 | (byte(i) & 0x3fU);
    }
    bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    bool surrogate = code >= 0xd800 && code <= 0xdfff;
    bool control = code < 0xa0;
    // These change the order in which a terminal shows the line.
    bool direction = (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
    return overlong || surrogate || control || direction || code > 0x10ffff ? 0 : length;
}

std::string escapedByte(unsigned char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\\':
            return "\\\\";
        default: {
            char text[8];
            std::snprintf(text, sizeof(text), "\\x%02x", byte);
            return text;
        }
    }
}

}  // namespace

std::vector<std::string> splitMemberName(std::string_view name) {
    if (name.empty()) {
        throw MemberFailure("the name is empty");
    }
    if (name.front() == '/') {
        throw MemberFailure("the name is absolute");
    }
    std::vector<std::string> components;
    for (std::size_t start = 0; start <= name.size();) {
        std::size_t end = std::min(name.find('/', start), name.size());
        appendComponent(name.substr(start, end - start), components);
        start = end + 1;
    }
    return components;
}

std::string printableName(std::string_view name) {
    std::string printable;
    while (!name.empty()) {
        std::size_t length = printableLength(name);
        std::string piece = length > 0 ? std::string(name.substr(0, length))
                                       : escapedByte(static_cast<unsigned char>(name.front()));
        if (printable.size() + piece.size() > kPrintableLimit) {
            return printable + "...";
        }
        printable += piece;
        name.remove_prefix(length > 0 ? length : 1);
    }
    return printable;
}

}  // namespace zpk_archive
